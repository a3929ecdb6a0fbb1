#include <unistd.h>

#include "QXPlatform/foundation/Bundle.h"
#include "QXPlatform/foundation/Device.h"
#include "QXPlatform/foundation/Executable.h"
#include "QXPlatform/foundation/Locale.h"
#include "QXPlatform/foundation/OSRelease.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

constexpr std::string_view kInfo = R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)"
                                   R"(<key>CFBundleIdentifier</key><string>com.example.app</string>)"
                                   R"(<key>Levels</key><array><integer>3</integer></array></dict></plist>)";

TEST(BundleTest, ReadsItsInformationDictionary) {
  const support::TemporaryDirectory directory;
  directory.write("Info.plist", kInfo);
  const Bundle bundle(directory.path());
  EXPECT_EQ(bundle.bundleIdentifier(), "com.example.app");
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("Levels").elements()[0].integer(), 3);
  EXPECT_TRUE(bundle.objectForInfoDictionaryKey("Other").isNull());
}

TEST(BundleTest, IsEmptyWithoutAReadableInfoFile) {
  const support::TemporaryDirectory directory;
  EXPECT_TRUE(Bundle(directory.path()).infoDictionary().empty());
  EXPECT_TRUE(Bundle(directory.path("missing")).infoDictionary().empty());
  EXPECT_TRUE(Bundle("").infoDictionary().empty());
  directory.write("Info.plist", "<plist><array/></plist>");
  EXPECT_TRUE(Bundle(directory.path()).infoDictionary().empty());
  EXPECT_EQ(Bundle(directory.path()).bundleIdentifier(), std::nullopt);
}

// Exits with 0 when the main bundle, which is read once per process, is in that directory.
[[noreturn]] void exitAfterComparing(const std::optional<std::string>& named, const std::string& expected) {
  const support::ScopedEnvironment environment("QX_BUNDLE", named);
  std::_Exit(Bundle::main().directory() == expected ? 0 : 1);
}

TEST(BundleTest, TheMainBundleIsTheOneNamedElseWhereTheExecutableLies) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto executable = executablePath().parent_path();
  EXPECT_EXIT(exitAfterComparing("/no/such/bundle", "/no/such/bundle"), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(exitAfterComparing(std::nullopt, executable), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(exitAfterComparing("", executable), testing::ExitedWithCode(0), "");
}

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
