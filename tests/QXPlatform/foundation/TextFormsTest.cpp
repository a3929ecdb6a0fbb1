#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/Date.h"
#include "QXPlatform/foundation/UUID.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

TEST(Base64Test, EncodesAndDecodesEveryLengthOfTail) {
  const std::pair<std::string_view, std::string_view> pairs[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"\xFB\xFF\xFE", "+//+"},
      {{"\0\0", 2}, "AAA="},
  };
  for (const auto& [bytes, text] : pairs) {
    EXPECT_EQ(encodeBase64(bytes), text);
    const auto decoded = decodeBase64(text);
    ASSERT_TRUE(decoded) << text;
    EXPECT_EQ(decoded->view(), bytes);
  }
}

TEST(Base64Test, EveryByteSurvives) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(decodeBase64(encodeBase64(all))->view(), all);
}

TEST(Base64Test, IgnoresTheUnusedBitsOfTheLastCharacter) {
  EXPECT_EQ(decodeBase64("Zn==")->view(), "f");
  EXPECT_EQ(decodeBase64("Zm9=")->view(), "fo");
}

TEST(Base64Test, RefusesForeignCharactersAndWrongPadding) {
  for (const std::string_view text :
       {"Z", "Zg", "Zg=", "Zm9", "=", "==", "====", "Z===", "Zg==Zg==", "Zm=v", "Zm8=\n", "Zm9v\n",
        "Zm9v Zm9", " Zm9", "Zm9-", "Zm9_", "Zm9\xC3", "Zg==="}) {
    EXPECT_EQ(decodeBase64(text), std::nullopt) << text;
  }
  EXPECT_EQ(decodeBase64({"Zm\0v", 4}), std::nullopt);
}

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

TEST(UUIDTest, IsARandomUUIDInUpperCase) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    const std::string uuid = makeUUIDString();
    ASSERT_THAT(uuid,
                testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    EXPECT_TRUE(seen.insert(uuid).second);
  }
}

}  // namespace
}  // namespace QXPlatform
