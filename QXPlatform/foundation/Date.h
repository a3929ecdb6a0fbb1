#pragma once

#include <chrono>
#include <compare>
#include <optional>
#include <string>

namespace QXPlatform {

// An instant, as seconds since 1970-01-01T00:00:00Z. May be negative, and may be NaN or infinite when it
// was read from outside. A plain value; safe on any thread.
struct Date {
  double secondsSince1970 = 0;

  static Date now();

  friend constexpr auto operator<=>(const Date&, const Date&) = default;
};

// The Gregorian UTC form 2024-05-01T09:03:07.250Z, truncated to the millisecond. Nothing for a date that is
// not finite or lies outside the years 1 to 9999.
std::optional<std::string> formatUTCMilliseconds(Date date);

}  // namespace QXPlatform
