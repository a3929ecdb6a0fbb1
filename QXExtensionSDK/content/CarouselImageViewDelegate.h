#pragma once

#include <cstdint>

namespace QXExtensionSDK {

// Hears of a panel's image. Main thread.
class CarouselImageViewDelegate {
 public:
  virtual ~CarouselImageViewDelegate() = default;

  // The download has ended, well or not.
  virtual void imageDownloadCompleted(std::int64_t panelIndex) = 0;
};

}  // namespace QXExtensionSDK
