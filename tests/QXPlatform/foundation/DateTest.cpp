#include "QXPlatform/foundation/Date.h"

#include <gtest/gtest.h>

#include <limits>

namespace QXPlatform {
namespace {

TEST(DateTest, FormatsDownToTheMillisecondAtOrBeforeTheInstant) {
  const std::pair<double, std::string_view> cases[] = {
      {0, "1970-01-01T00:00:00.000Z"},
      {1714554187.25, "2024-05-01T09:03:07.250Z"},
      {1714554187.2509, "2024-05-01T09:03:07.250Z"},
      {1714554187.9999, "2024-05-01T09:03:07.999Z"},
      {-0.0001, "1969-12-31T23:59:59.999Z"},
      {951782400, "2000-02-29T00:00:00.000Z"},
      {-62135596800, "0001-01-01T00:00:00.000Z"},
      {253402300799.999, "9999-12-31T23:59:59.999Z"},
  };
  for (const auto& [seconds, text] : cases) EXPECT_EQ(formatUTCMilliseconds({seconds}), text);
}

// Most decimal fractions fall a little short as doubles; none may lose a millisecond by that, whatever the
// size of the number they stand in.
TEST(DateTest, NoMillisecondIsLostToRounding) {
  for (const long start : {1L, 1073741824L, 1714554187L, 2147483648L, 4294967296L, 200000000000L}) {
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
      const double seconds = static_cast<double>(start * 1000 + millisecond) / 1000;
      ASSERT_EQ(formatUTCMilliseconds({seconds})->substr(20, 3), std::to_string(1000 + millisecond).substr(1))
          << start;
    }
  }
}

TEST(DateTest, HasNoTextOutsideTheYears1To9999) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double seconds : {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, 1e300, -1e18,
                               253402300800.0, -62135596800.001}) {
    EXPECT_EQ(formatUTCMilliseconds({seconds}), std::nullopt) << seconds;
  }
}

}  // namespace
}  // namespace QXPlatform
