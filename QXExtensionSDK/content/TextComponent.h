#pragma once

#include <string>

#include "QXExtensionSDK/payload/CarouselDefaultValue.h"
#include "QXExtensionSDK/payload/Color.h"
#include "QXExtensionSDK/payload/TextBlock.h"
#include "QXExtensionSDK/payload/TextStyle.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

using TextAlignment = TextAlignmentMode;

// The system's font, in a style and at a size in points.
struct Font {
  FontStyle style;
  double pointSize;

  friend bool operator==(const Font&, const Font&) = default;
};

// A text with every attribute settled.
struct TextComponent {
  std::string text;
  Font font;
  TextAlignment textAlignment;
  Color textColor;

  friend bool operator==(const TextComponent&, const TextComponent&) = default;
};

// Each attribute that the block lacks, and a colour that is none, is the slot's.
TextComponent resolveText(const TextBlock& block, const TextBlockDefaultValue& slot, const Logger& logger);

}  // namespace QXExtensionSDK
