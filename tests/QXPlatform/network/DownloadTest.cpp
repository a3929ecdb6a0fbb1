#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "QXPlatform/dispatch/Activity.h"
#include "tests/support/Exchange.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"
#include "tools/backend/Panels.h"

namespace QXPlatform {
namespace {

namespace fs = std::filesystem;
using backend::Fault;
using backend::LoopbackServer;
using backend::Request;
using backend::Response;
using support::Exchange;
using support::requestTo;
using Code = URLError::Code;

class DownloadTest : public testing::Test {
 protected:
  Exchange download(
      const std::string& url, std::function<void(const fs::path&)> duringCompletion = [](const auto&) {}) {
    Exchange exchange;
    session_->downloadTask(requestTo(url), exchange.downloadCompletion(std::move(duringCompletion)))
        ->resume();
    return exchange;
  }

  // When the last completion has run, what is to be removed is gone.
  void settle() { EXPECT_TRUE(Activity::waitUntilNone(support::soon())); }

  support::TemporaryDirectory temporary_;
  support::ScopedEnvironment environment_{"TMPDIR", temporary_.path()};
  std::optional<URLSession> session_{URLSessionConfiguration{}};
};

mode_t modeOf(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return status.st_mode & 0777;
}

TEST_F(DownloadTest, TheFileIsTheReceiversDuringTheCompletionOnly) {
  const LoopbackServer server;
  EXPECT_TRUE(fs::is_empty(temporary_.path()));
  const auto outcome = download(server.url("/files/night.png"), [](const fs::path& file) {
                         EXPECT_EQ(modeOf(file), 0600U);
                         EXPECT_EQ(modeOf(file.parent_path()), 0700U);
                       }).wait();
  EXPECT_EQ(outcome.status(), 200);
  EXPECT_EQ(outcome.fileContent, backend::panels()[3].bytes);
  settle();
  EXPECT_FALSE(fs::exists(outcome.file->filePath()));
  EXPECT_EQ(fs::path(outcome.file->filePath()).parent_path().parent_path(), temporary_.path());
  session_.reset();
  EXPECT_TRUE(fs::is_empty(temporary_.path()));
}

TEST_F(DownloadTest, AFileMovedWithinItsDirectorySurvivesTheSession) {
  const LoopbackServer server;
  fs::path moved;
  download(server.url("/files/night.png"), [&moved](const fs::path& file) {
    moved = file.parent_path() / "night.png";
    fs::rename(file, moved);
  }).wait();
  settle();
  session_.reset();
  EXPECT_EQ(fs::file_size(moved), backend::panels()[3].bytes.size());
}

TEST_F(DownloadTest, AnEmptyAnswerAndAFailedStatusAreFilesToo) {
  LoopbackServer empty({.status = 204});
  EXPECT_TRUE(download(empty.url()).wait().file);
  LoopbackServer missing;
  const auto outcome = download(missing.url("/files/none")).wait();
  EXPECT_EQ(outcome.status(), 404);
  EXPECT_EQ(outcome.fileContent, "no such file\n");
}

TEST_F(DownloadTest, ABrokenTransferLeavesNothing) {
  const LoopbackServer server({.handler = [](const Request&) {
    return Response{.body = "a longer body", .fault = Fault::truncatedBody};
  }});
  const auto outcome = download(server.url()).wait();
  EXPECT_EQ(outcome.code(), Code::connectionLost);
  EXPECT_EQ(outcome.file, std::nullopt);
  settle();
  session_.reset();
  EXPECT_TRUE(fs::is_empty(temporary_.path()));
}

TEST_F(DownloadTest, AFullDiskIsAnError) {
  // A limit on the size of files stands for the disk's end: both fail in write().
  signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{4096, before.rlim_max};
  const LoopbackServer server;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const auto outcome = download(server.url("/files/night.png")).wait();
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  EXPECT_EQ(outcome.code(), Code::cannotWriteFile);

  const support::ScopedEnvironment gone("TMPDIR", "/nonexistent");
  session_.emplace(URLSessionConfiguration{});
  EXPECT_EQ(download(server.url("/files/night.png")).wait().code(), Code::cannotWriteFile);
}

}  // namespace
}  // namespace QXPlatform
