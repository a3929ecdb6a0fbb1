#include "platform/foundation/Date.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace platform {

namespace {

using std::chrono::days;
using std::chrono::milliseconds;
using UTCMilliseconds = std::chrono::sys_time<milliseconds>;

constexpr UTCMilliseconds kFirst{std::chrono::sys_days(std::chrono::year(1) / 1 / 1)};
constexpr UTCMilliseconds kEnd{std::chrono::sys_days(std::chrono::year(10000) / 1 / 1)};

double seconds(std::int64_t wholeMilliseconds) {
  return static_cast<double>(wholeMilliseconds) / 1000;
}

// The last millisecond that is not after the date. What is compared are doubles, so that 7.001 seconds, which
// as a double fall a little short, are still 7001 milliseconds.
std::int64_t millisecondsSince1970(double secondsSince1970) {
  auto whole = static_cast<std::int64_t>(std::floor(secondsSince1970 * 1000));
  if (seconds(whole) > secondsSince1970) --whole;
  if (seconds(whole + 1) <= secondsSince1970) ++whole;
  return whole;
}

}  // namespace

Date Date::now() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration<double>(sinceEpoch).count()};
}

std::optional<std::string> formatUTCMilliseconds(Date date) {
  // Generous bounds that NaN fails too; what lies between them can be counted in milliseconds.
  if (!(std::abs(date.secondsSince1970) < 1e12)) return std::nullopt;
  const UTCMilliseconds instant{milliseconds(millisecondsSince1970(date.secondsSince1970))};
  if (instant < kFirst || instant >= kEnd) return std::nullopt;

  const auto day = std::chrono::floor<days>(instant);
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss<milliseconds> time(instant - day);
  std::array<char, 32> text;
  const int length = std::snprintf(
      text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(calendar.year()),
      static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
      static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
  return std::string(text.data(), static_cast<std::size_t>(length));
}

}  // namespace platform
