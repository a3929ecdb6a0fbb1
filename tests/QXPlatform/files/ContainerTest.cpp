#include "QXPlatform/files/Container.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryDirectory.h"

namespace QXPlatform {
namespace {

TEST(Container, LiesUnderTheNamedRootOrTheDataHome) {
  const support::ScopedEnvironment home("HOME", "/home/u");
  const support::ScopedEnvironment noRoot("QX_APP_GROUPS_ROOT", "");
  {
    const support::ScopedEnvironment relative("XDG_DATA_HOME", "data");
    EXPECT_EQ(containerPathForGroup("group.a"), "/home/u/.local/share/app-groups/group.a");
  }
  const support::ScopedEnvironment data("XDG_DATA_HOME", "/data");
  EXPECT_EQ(containerPathForGroup("group.a"), "/data/app-groups/group.a");
  {
    const support::ScopedEnvironment root("QX_APP_GROUPS_ROOT", "/groups");
    EXPECT_EQ(containerPathForGroup("group.a"), "/groups/group.a");
  }
  const support::ScopedEnvironment root("QX_APP_GROUPS_ROOT", "here");
  EXPECT_EQ(containerPathForGroup("group.a"), std::filesystem::current_path() / "here" / "group.a");
}

TEST(Container, IsRefusedToIdentifiersThatCouldLeaveTheRoot) {
  const support::ScopedEnvironment root("QX_APP_GROUPS_ROOT", "/groups");
  for (const std::string& group :
       {std::string(""), std::string("."), std::string(".."), std::string("a/b"), std::string("/a"),
        std::string("a..b"), std::string("a\nb"), std::string("a\x7f"), std::string("a\0b", 3)}) {
    EXPECT_EQ(containerPathForGroup(group), std::nullopt) << group;
  }
}

TEST(Container, CountsOnlyAsAnExistingDirectory) {
  const support::TemporaryDirectory directory;
  const support::ScopedEnvironment root("QX_APP_GROUPS_ROOT", directory.path());
  std::filesystem::create_directory(directory.path("group a%"));
  directory.write("file", "");

  const auto url = containerURLForSecurityApplicationGroupIdentifier("group a%");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->filePath(), directory.path("group a%"));
  EXPECT_FALSE(containerURLForSecurityApplicationGroupIdentifier("file"));
  EXPECT_FALSE(containerURLForSecurityApplicationGroupIdentifier("missing"));
}

}  // namespace
}  // namespace QXPlatform
