#include "QXPlatform/foundation/Date.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>

namespace QXPlatform {

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

// By hand: a batch has hundreds of dates, and printf takes ten times as long for one.
void writeDigits(std::string& text, std::size_t start, std::size_t count, std::int64_t number) {
  for (std::size_t place = start + count; place > start; number /= 10) {
    text[--place] = static_cast<char>('0' + number % 10);
  }
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
  std::string text = "0000-00-00T00:00:00.000Z";
  writeDigits(text, 0, 4, static_cast<int>(calendar.year()));
  writeDigits(text, 5, 2, static_cast<unsigned>(calendar.month()));
  writeDigits(text, 8, 2, static_cast<unsigned>(calendar.day()));
  writeDigits(text, 11, 2, time.hours().count());
  writeDigits(text, 14, 2, time.minutes().count());
  writeDigits(text, 17, 2, time.seconds().count());
  writeDigits(text, 20, 3, time.subseconds().count());
  return text;
}

}  // namespace QXPlatform
