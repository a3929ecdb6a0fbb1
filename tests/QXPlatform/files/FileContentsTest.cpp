#include "QXPlatform/files/FileContents.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "QXPlatform/files/FileCoordinator.h"
#include "tests/support/TemporaryDirectory.h"

namespace QXPlatform {
namespace {

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

TEST_F(FileContents, ReadsFilesThatDoNotTellTheirSize) {
  EXPECT_GT(readContents(URL::file("/proc/self/status"))->size(), 100U);
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

TEST_F(FileContents, WaitsOutAPassingWantOfDescriptors) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer needs descriptors of its own to look at an object's type";
#endif
  directory_.write("record", "x");
  rlimit usual{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
  rlimit none = usual;
  none.rlim_cur = 0;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
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
