#include "QXExtensionSDK/payload/Color.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/RecordingLogSink.h"

namespace QXExtensionSDK {
namespace {

TEST(ColorTest, ReadsSixHexadecimalDigitsInEitherCase) {
  support::ScopedLogRecorder log;
  const auto color = parseColor("E5e50f", Logger::content());
  ASSERT_TRUE(color);
  EXPECT_DOUBLE_EQ(color->red(), 229 / 255.0);
  EXPECT_DOUBLE_EQ(color->green(), 229 / 255.0);
  EXPECT_DOUBLE_EQ(color->blue(), 15 / 255.0);
  EXPECT_DOUBLE_EQ(color->alpha(), 1.0);
  EXPECT_EQ(color->hexString(), "E5E50F");
  EXPECT_EQ(parseColor("e5e5e5", Logger::content()), parseColor("E5E5E5", Logger::content()));
  EXPECT_TRUE(log->entries().empty());
}

TEST(ColorTest, RefusesEverythingElse) {
  for (const char* text :
       {"", "E5E5E", "#E5E5E5", "#E5E5E", "E5E5E5FF", "G5E5E5", "-5E5E5", " E5E5E", "0xE5E5"}) {
    support::ScopedLogRecorder log;
    EXPECT_EQ(parseColor(text, Logger::content()), std::nullopt) << text;
    EXPECT_THAT(log->entries(), testing::ElementsAre(support::LogEntry{
                                    "ContentExtension", "ContentGeneral", QXPlatform::LogType::error,
                                    "Invalid color value=" + std::string(text)}));
  }
}

}  // namespace
}  // namespace QXExtensionSDK
