#include <gtest/gtest.h>
#include <unistd.h>

#include "QXPlatform/foundation/Device.h"
#include "QXPlatform/foundation/Locale.h"
#include "QXPlatform/linux/OSRelease.h"
#include "tests/support/ScopedEnvironment.h"

namespace QXPlatform {
namespace {

TEST(DeviceTest, DescribesThisMachine) {
  char name[256] = {};
  ASSERT_EQ(gethostname(name, sizeof name - 1), 0);
  EXPECT_EQ(Device::current().name, name);
  EXPECT_FALSE(Device::current().systemName.empty());
  EXPECT_FALSE(Device::current().systemVersion.empty());
}

TEST(OSReleaseTest, ReadsShellAssignments) {
  constexpr std::string_view kText =
      "# NAME=comment\nNAME=\"First\"\n  NAME=\"De\\\"bian\" \r\nVERSION_ID='12 \\x'\nEMPTY=\"\"\nID=a\\ "
      "b\nLAST=x";
  EXPECT_EQ(osReleaseValue(kText, "NAME"), "De\"bian");
  EXPECT_EQ(osReleaseValue(kText, "VERSION_ID"), "12 \\x");
  EXPECT_EQ(osReleaseValue(kText, "ID"), "a b");
  EXPECT_EQ(osReleaseValue(kText, "LAST"), "x");
  EXPECT_EQ(osReleaseValue(kText, "EMPTY"), std::nullopt);
  EXPECT_EQ(osReleaseValue(kText, "VERSION"), std::nullopt);
  EXPECT_EQ(osReleaseValue("", "NAME"), std::nullopt);
}

TEST(LocaleTest, IsTheFirstThatTheEnvironmentSets) {
  struct Case {
    std::optional<std::string> all;
    std::optional<std::string> messages;
    std::optional<std::string> lang;
    std::string_view identifier;
  };
  const Case cases[] = {
      {{}, {}, "de_DE.UTF-8", "de_DE"},  {"", "fr_CA@euro", "de_DE.UTF-8", "fr_CA"},
      {"ar", "fr_CA", "de_DE", "ar"},    {"C.UTF-8", "fr_CA", "de_DE", "en_US_POSIX"},
      {"POSIX", {}, {}, "en_US_POSIX"},  {{}, {}, {}, "en_US_POSIX"},
      {{}, {}, "x\r\ny", "en_US_POSIX"},
  };
  for (const Case& expected : cases) {
    const support::ScopedEnvironment all("LC_ALL", expected.all);
    const support::ScopedEnvironment messages("LC_MESSAGES", expected.messages);
    const support::ScopedEnvironment lang("LANG", expected.lang);
    EXPECT_EQ(Locale::currentIdentifier(), expected.identifier);
  }
}

}  // namespace
}  // namespace QXPlatform
