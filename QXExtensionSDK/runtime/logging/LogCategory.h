#pragma once

#include <cstdint>
#include <string_view>

namespace QXExtensionSDK {

// The component that speaks.
enum class LogCategory : std::int64_t {
  module = 0,
  serviceGeneral = 1,
  serviceWorker = 2,
  decompression = 3,
  deliveryReceipt = 4,
  network = 5,
  carouselAttachment = 6,
  contentGeneral = 7,
  ui = 8,
};

// The text that is written as the category. A number outside 0 to 8 stops the process.
std::string_view categoryString(LogCategory category);

}  // namespace QXExtensionSDK
