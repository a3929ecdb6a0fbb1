#include "agent/activation/DesktopEntry.h"

#include "agent/setup/Installation.h"
#include "tests/support/Test.h"

namespace QXAgent {
namespace {

TEST(DesktopEntryTest, ACommandIsReadAsItsWords) {
  const struct {
    const char* line;
    std::vector<std::string> words;
  } table[] = {
      {"Exec=shop", {"shop"}},
      {"Exec = /opt/a\\sb/shop  --x %U", {"/opt/a", "b/shop", "--x"}},
      {R"(Exec="/opt/a b/shop" "say \\"hi\\"" 100%% %f)", {"/opt/a b/shop", "say \"hi\"", "100%"}},
      {"Exec=shop \"\" x", {"shop", "", "x"}},
      {"TryExec=shop", {}},
      {"Exec=", {}},
  };
  for (const auto& row : table) {
    const auto entry = DesktopEntry::parse(std::string("[Other]\nExec=no\n[Desktop Entry]\n") + row.line +
                                           "\n[Desktop Action x]\nExec=no\n");
    EXPECT_EQ(entry.command, row.words) << row.line;
  }
  const auto entry =
      DesktopEntry::parse("# x\n[Desktop Entry]\nDBusActivatable=true\nActions=a;notification;\n");
  EXPECT_TRUE(entry.isBusActivatable);
  EXPECT_EQ(entry.actions, (std::vector<std::string>{"a", "notification"}));
}

TEST(InstallationTest, WhatIsWrittenIsReadAndRemovedAgain) {
  const support::TemporaryDirectory directory;
  const support::ScopedEnvironment data("XDG_DATA_HOME", directory.path("data"));
  const support::ScopedEnvironment config("XDG_CONFIG_HOME", directory.path("config"));
  Installation installation;
  installation.app = "com.example.Sh-op";
  installation.serviceExtension = "/opt/shop/service";
  installation.bundle = "/opt/shop";
  installation.name = "Shop\nX";
  EXPECT_FALSE(Installation::read(installation.app));
  const auto installed = install(installation, "/opt/a \"b\"/qx-agent");
  ASSERT_TRUE(installed);
  ASSERT_EQ(installed->files.size(), 5U);
  const auto read = Installation::read(installation.app);
  ASSERT_TRUE(read) << read.error().message;
  EXPECT_EQ(read->serviceExtension, installation.serviceExtension);
  EXPECT_EQ(read->bundle, installation.bundle);
  EXPECT_EQ(read->files, installed->files);
  EXPECT_FALSE(read->contentExtension || read->distributor);

  const std::string text = support::contentsOf(installed->files[1]);
  EXPECT_NE(text.find(R"(ExecStart="/opt/a \"b\"/qx-agent" run --app com.example.Sh-op)"), std::string::npos)
      << text;
  EXPECT_TRUE(DesktopEntry::find(installation.app)->isBusActivatable);

  // A second time it is still the installation's own desktop entry; without it, it is the app's.
  EXPECT_EQ(install(installation, "/qx-agent")->files.size(), 5U);
  EXPECT_EQ(removeFiles(*installed).size(), 5U);
  std::filesystem::create_directories(directory.path("data/applications"));
  directory.write("data/applications/com.example.Sh-op.desktop", "[Desktop Entry]\nExec=shop\n");
  EXPECT_EQ(install(installation, "/qx-agent")->files.size(), 4U);

  for (const char* damage : {"", "{}", "[1]", R"({"serviceExtension": 3})"}) {
    directory.write("config/qx-agent/com.example.Sh-op.json", damage);
    EXPECT_FALSE(Installation::read(installation.app)) << damage;
  }
}

TEST(InstallationTest, AnApplicationIdIsABusName) {
  for (const char* good : {"com.example.Shop", "org.x-y._z9"}) EXPECT_TRUE(isApplicationId(good)) << good;
  for (const char* bad : {"", "Shop", ".Shop", "com..Shop", "com.9x", "com/x.y", "../x.y", ":1.5", "com.x y"})
    EXPECT_FALSE(isApplicationId(bad)) << bad;
}

}  // namespace
}  // namespace QXAgent
