#include "QXPlatform/foundation/Base64.h"

#include <gtest/gtest.h>

#include <string>

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

TEST(Base64Test, RefusesWhatIsNotCanonical) {
  for (const std::string_view text :
       {"Z",      "Zg",     "Zg=",      "Zm9",  "=",    "==",   "====", "Z===", "Zg==Zg==", "Zm=v",
        "Zm8=\n", "Zm9v\n", "Zm9v Zm9", " Zm9", "Zm9-", "Zm9_", "Zh==", "Zm9=", "Zm9\xC3",  "Zg==="}) {
    EXPECT_EQ(decodeBase64(text), std::nullopt) << text;
  }
  EXPECT_EQ(decodeBase64({"Zm\0v", 4}), std::nullopt);
}

}  // namespace
}  // namespace QXPlatform
