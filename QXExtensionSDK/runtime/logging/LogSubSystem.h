#pragma once

#include <array>
#include <cstdint>

#include "QXPlatform/foundation/RawValues.h"

namespace QXExtensionSDK {

// The extension that speaks.
enum class LogSubSystem : std::uint8_t { serviceExtension = 0, contentExtnsion = 1 };
constexpr auto rawValues(QXPlatform::RawValuesOf<LogSubSystem>) {
  return std::to_array<QXPlatform::RawCase<LogSubSystem>>(
      {{LogSubSystem::serviceExtension, "ServiceExtension"},
       {LogSubSystem::contentExtnsion, "ContentExtension"}});
}

}  // namespace QXExtensionSDK
