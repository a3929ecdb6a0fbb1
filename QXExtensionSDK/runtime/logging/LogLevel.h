#pragma once

#include <cstdint>
#include <optional>

#include "QXPlatform/foundation/RawValues.h"

namespace QXExtensionSDK {

// Which messages are written: those of the level's own kind and graver ones. Ordered by number.
enum class LogLevel : std::int64_t { debug = 0, warn = 1, error = 2, fault = 3, none = 4 };
constexpr auto rawValues(QXPlatform::RawValuesOf<LogLevel>) {
  return std::to_array<QXPlatform::RawCase<LogLevel>>({{LogLevel::debug, "debug"},
                                                       {LogLevel::warn, "warn"},
                                                       {LogLevel::error, "error"},
                                                       {LogLevel::fault, "fault"},
                                                       {LogLevel::none, "none"}});
}

// Nothing for a number outside 0 to 4.
constexpr std::optional<LogLevel> makeLogLevel(std::int64_t number) {
  static_assert(static_cast<std::int64_t>(LogLevel::none) == 4);
  if (number < 0 || number > 4) return std::nullopt;
  return static_cast<LogLevel>(number);
}

}  // namespace QXExtensionSDK
