#pragma once

#include <cstdint>
#include <optional>

namespace QXExtensionSDK {

// Which messages are written: those of the level's own kind and graver ones. Ordered by raw value.
enum class LogLevel : std::int64_t { debug = 0, warn = 1, error = 2, fault = 3, none = 4 };

// Nothing for a number outside 0 to 4.
constexpr std::optional<LogLevel> makeLogLevel(std::int64_t rawValue) {
  if (rawValue < 0 || rawValue > 4) return std::nullopt;
  return static_cast<LogLevel>(rawValue);
}

}  // namespace QXExtensionSDK
