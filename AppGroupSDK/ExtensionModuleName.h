#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "QXPlatform/foundation/RawValues.h"

namespace AppGroupSDK {

// The messaging modules of the host application.
enum class ExtensionModuleName : std::int64_t { quorixEngagement = 1, mobileAppMessaging = 2 };
constexpr auto rawValues(QXPlatform::RawValuesOf<ExtensionModuleName>) {
  return std::to_array({ExtensionModuleName::quorixEngagement, ExtensionModuleName::mobileAppMessaging});
}

// "quorixEngagement" or "mobileAppMessaging": the form that is stored and that names module-scoped files. A
// raw value that is neither stops the process.
std::string_view stringValue(ExtensionModuleName module);

}  // namespace AppGroupSDK
