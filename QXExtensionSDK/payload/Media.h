#pragma once

#include <optional>
#include <string>

#include "QXExtensionSDK/payload/GenericStyle.h"
#include "QXExtensionSDK/payload/TextBlock.h"

namespace QXExtensionSDK {

// A panel's image.
struct Media {
  std::string url;
  // Behind the image.
  std::optional<GenericStyle> style;
  // Shown when the image cannot be.
  std::optional<TextBlock> altText;

  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(jsonField("ul", &Media::url), jsonField("s", &Media::style),
                                  jsonField("at", &Media::altText));
  }
  friend bool operator==(const Media&, const Media&) = default;
};

}  // namespace QXExtensionSDK
