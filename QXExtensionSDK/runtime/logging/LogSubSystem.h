#pragma once

#include <cstdint>
#include <string_view>

namespace QXExtensionSDK {

// The extension that speaks.
enum class LogSubSystem : std::uint8_t { serviceExtension = 0, contentExtnsion = 1 };

constexpr std::string_view rawValue(LogSubSystem subSystem) {
  return subSystem == LogSubSystem::serviceExtension ? "ServiceExtension" : "ContentExtension";
}

}  // namespace QXExtensionSDK
