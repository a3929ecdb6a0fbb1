#pragma once

#include <optional>

#include "QXPlatform/foundation/URL.h"
#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

// Finds the media to show as thumbnail in a rich-features dictionary. Any thread.
class MediaURLExtractable {
 public:
  virtual ~MediaURLExtractable() = default;
  virtual std::optional<QXPlatform::URL> mediaURL(const QXPlatform::Dictionary& richFeatures) const = 0;
};

// The first panel's image, read straight from the payload without building the model.
class CarouselMediaURLExtractor final : public MediaURLExtractable {
 public:
  std::optional<QXPlatform::URL> mediaURL(const QXPlatform::Dictionary& richFeatures) const override;
};

}  // namespace QXExtensionSDK
