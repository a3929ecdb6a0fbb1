#include "QXPlatform/foundation/Bundle.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryDirectory.h"

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
  const auto executable = std::filesystem::canonical("/proc/self/exe").parent_path();
  EXPECT_EXIT(exitAfterComparing("/no/such/bundle", "/no/such/bundle"), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(exitAfterComparing(std::nullopt, executable), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(exitAfterComparing("", executable), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace QXPlatform
