#include <sys/resource.h>
#include <sys/stat.h>

#include "QXPlatform/files/Container.h"
#include "QXPlatform/files/FileContents.h"
#include "QXPlatform/files/FileCoordinator.h"
#include "tests/support/Test.h"

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

class FileContents : public testing::Test {
 protected:
  URL file(const std::string& name) const { return URL::file(directory_.path(name)); }
  std::string text(const std::string& name) const {
    const auto bytes = readContents(file(name));
    return bytes ? std::string(bytes->view()) : "(nothing)";
  }

  support::TemporaryDirectory directory_;
};

TEST_F(FileContents, ReadsWhatWasWritten) {
  for (const std::size_t size : {0U, 1U, 4096U, 1000000U}) {
    const std::string bytes(size, '\x80');
    EXPECT_TRUE(writeContents(bytes, file("record")));
    EXPECT_EQ(text("record"), bytes);
  }
  EXPECT_TRUE(writeContents("short", file("record")));
  EXPECT_EQ(text("record"), "short");
}

TEST_F(FileContents, ReadsAndWritesRegularFilesOnly) {
  directory_.write("elsewhere", "foreign");
  std::filesystem::create_symlink("elsewhere", directory_.path("link"));
  std::filesystem::create_directory(directory_.path("directory"));
  ASSERT_EQ(::mkfifo(directory_.path("pipe").c_str(), 0600), 0);

  for (const auto* name : {"link", "directory", "pipe"}) {
    EXPECT_FALSE(readContents(file(name))) << name;
    EXPECT_FALSE(writeContents("x", file(name))) << name;
  }
  EXPECT_EQ(text("elsewhere"), "foreign");
  EXPECT_FALSE(readContents(URL::file("/dev/zero")));
  EXPECT_FALSE(writeContents("x", URL::file("/dev/null")));
  EXPECT_FALSE(readContents(file("missing")));
  for (const auto* url : {"https://example.com/record", "file:record", "file:"}) {
    EXPECT_FALSE(readContents(*URL::parse(url))) << url;
  }
}

TEST_F(FileContents, RefusesFilesTooLargeForARecord) {
  directory_.write("record", "x");
  std::filesystem::resize_file(directory_.path("record"), kMaxFileContents + 1);
  EXPECT_FALSE(readContents(file("record")));
}

TEST_F(FileContents, WaitsOutAPassingWantOfDescriptorsAndTellsOfALastingOne) {
#ifdef QX_SANITIZED
  GTEST_SKIP() << "the sanitizer needs descriptors of its own to look at an object's type";
#endif
  directory_.write("record", "x");
  rlimit usual{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
  rlimit none = usual;
  none.rlim_cur = 0;
  const QXTestSupport::ScopedLogRecorder log;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_FALSE(readContents(file("record")));
  EXPECT_TRUE(log->has(directory_.path("record") + " cannot be opened: Too many open files"));
  std::thread relief([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ::setrlimit(RLIMIT_NOFILE, &usual);
  });
  std::optional<Data> read;
  FileCoordinator().coordinateReading(file("record"), [&](const URL& url) { read = *readContents(url); });
  relief.join();
  EXPECT_EQ(read, Data("x"));
}

TEST_F(FileContents, IsNotFooledByANulInAName) {
  directory_.write("record", "x");
  EXPECT_FALSE(readContents(file(std::string("record\0.data", 12))));
  EXPECT_FALSE(writeContents("y", file(std::string("record\0.data", 12))));
  EXPECT_EQ(text("record"), "x");
}

}  // namespace
}  // namespace QXPlatform
