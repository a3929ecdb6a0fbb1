#pragma once

#include <optional>
#include <string>

#include "QXExtensionSDK/payload/TextStyle.h"

namespace QXExtensionSDK {

// A text of the payload.
struct TextBlock {
  std::string text;
  std::optional<TextStyle> style;

  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(jsonField("tx", &TextBlock::text), jsonField("s", &TextBlock::style));
  }
  friend bool operator==(const TextBlock&, const TextBlock&) = default;
};

}  // namespace QXExtensionSDK
