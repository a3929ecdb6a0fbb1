#include "QXPlatform/dispatch/Activity.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/network/DownloadedFile.h"
#include "QXPlatform/network/URLSession.h"
#include "QXPlatform/notifications/ServiceExtensionHost.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Exchange.h"
#include "tests/support/FullDisk.h"
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
  const auto outcome = download(server.url("/files/night.png"), [](const fs::path& file) {
                         EXPECT_EQ(modeOf(file), 0600U);
                         EXPECT_EQ(modeOf(file.parent_path()), 0700U);
                       }).wait();
  EXPECT_EQ(outcome.status(), 200);
  EXPECT_EQ(outcome.fileContent, backend::panels()[3].bytes);
  settle();
  EXPECT_FALSE(fs::exists(outcome.file->filePath()));
  const fs::path all = fs::path(outcome.file->filePath()).parent_path().parent_path();
  EXPECT_EQ(all.parent_path(), temporary_.path());
  session_.reset();
  EXPECT_TRUE(fs::is_empty(all));
}

TEST_F(DownloadTest, AFileMovedWithinItsDirectoryGoesWithItsLastOwner) {
  const LoopbackServer server;
  for (int round = 0; round < 2; ++round) {
    fs::path moved;
    std::shared_ptr<DownloadedFile> owner;
    download(server.url("/files/night.png"), [&](const fs::path& file) {
      moved = file.parent_path() / "night.png";
      fs::rename(file, moved);
      owner = DownloadedFile::owner(URL::file(moved.native()));
    }).wait();
    settle();
    EXPECT_EQ(DownloadedFile::owner(URL::file(moved.native())), owner);
    owner.reset();
    EXPECT_FALSE(fs::exists(moved.parent_path())) << "and the session can make it again";
  }
  const std::string foreign = temporary_.write("night.png", "the host's own");
  EXPECT_EQ(DownloadedFile::owner(URL::file(foreign)), nullptr);
}

TEST(DownloadDeathTest, WhatAKilledProcessHasLeftIsRemovedWhenTheNextBegins) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const support::TemporaryDirectory temporary;
  const support::ScopedEnvironment environment("TMPDIR", temporary.path());
  for (const char* name : {"qx-downloads-killed", "qx-downloads-living"}) {
    fs::create_directory(temporary.path(name));
    temporary.write(std::string(name) + "/download-1", "half of a pict");
  }
  const FileDescriptor living(open(temporary.path("qx-downloads-living").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(living.get(), LOCK_EX), 0);
  const auto startsWell = [&] {
    const URLSession session({});
    return !fs::exists(temporary.path("qx-downloads-killed")) &&
           fs::exists(temporary.path("qx-downloads-living/download-1"));
  };
  EXPECT_EXIT(std::exit(startsWell() ? 0 : 1), testing::ExitedWithCode(0), "");
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
  for (const auto& all : fs::directory_iterator(temporary_.path())) EXPECT_TRUE(fs::is_empty(all));
}

TEST_F(DownloadTest, AFullDiskIsAnError) {
  const LoopbackServer server;
  {
    const support::ScopedEnvironment gone("TMPDIR", "/nonexistent");
    EXPECT_EQ(download(server.url("/files/night.png")).wait().code(), Code::cannotWriteFile);
  }
  const support::FullDisk full(4096);
  EXPECT_EQ(download(server.url("/files/night.png")).wait().code(), Code::cannotWriteFile);
}

// Does as the test says, in place of a host.
class ScriptedExtension final : public UNNotificationServiceExtension {
 public:
  using Script =
      std::function<void(UNMutableNotificationContent& content, const std::function<void()>& show)>;
  ScriptedExtension(Script script, std::shared_ptr<UNMutableNotificationContent>& kept)
      : script_(std::move(script)), kept_(kept) {}

  void didReceiveNotificationRequest(std::shared_ptr<const UNNotificationRequest> request,
                                     ContentHandler contentHandler) override {
    kept_ = UNMutableNotificationContent::mutableCopy(request->content.get());
    script_(*kept_, [&] { contentHandler(kept_); });
  }
  void serviceExtensionTimeWillExpire() override {}

 private:
  const Script script_;
  std::shared_ptr<UNMutableNotificationContent>& kept_;
};

// A download as an attachment; the path is where it lies meanwhile.
UNNotificationAttachment downloaded(const backend::LoopbackServer& server, std::filesystem::path& path) {
  const support::Exchange exchange;
  URLSession session({});
  session
      .downloadTask(support::requestTo(server.url("/files/night.png")),
                    exchange.downloadCompletion([&](const std::filesystem::path& file) {
                      path = file.parent_path() / "night.png";
                      std::filesystem::rename(file, path);
                    }))
      ->resume();
  exchange.wait();
  return *UNNotificationAttachment::make("thumbnail", URL::file(path.native()));
}

// The content outlives everything, as it does in a hook that hangs.
TEST(NotificationFilesTest, OnlyWhatTheNotificationShowsIsKept) {
  const support::TemporaryDirectory temporary;
  const support::ScopedEnvironment environment("TMPDIR", temporary.path());
  const backend::LoopbackServer server;
  const std::string own = temporary.write("own.png", backend::panels()[3].bytes);
  const auto ownAttachment = *UNNotificationAttachment::make("own", URL::file(own));
  std::filesystem::path path;
  const auto attach = [&](UNMutableNotificationContent& content) {
    content.setAttachments({ownAttachment, downloaded(server, path)});
  };
  const struct {
    ScriptedExtension::Script script;
    bool shown;
  } table[] = {
      {[&](auto& content, const auto& show) { attach(content), show(); }, true},
      {[&](auto& content, const auto& show) { attach(content), show(), show(); }, true},
      {[&](auto& content, const auto& show) { show(), attach(content); }, false},
      {[&](auto& content, const auto& show) { show(), attach(content), show(); }, false},
      {[&](auto& content, const auto& show) { attach(content), content.setAttachments({}), show(); }, false},
  };
  std::size_t row = 0;
  for (const auto& each : table) {
    std::shared_ptr<UNMutableNotificationContent> kept;
    ServiceExtensionHost host([&] { return std::make_shared<ScriptedExtension>(each.script, kept); },
                              support::kPatience, temporary.path("attachments"));
    const auto result = host.run(support::makeRequest({}));
    EXPECT_TRUE(Activity::waitUntilNone(support::soon()));
    EXPECT_FALSE(std::filesystem::exists(path)) << row;
    EXPECT_EQ(result.content.attachments.size(), each.shown ? 2U : 0U) << row;
    for (const auto& attachment : result.content.attachments) {
      EXPECT_TRUE(std::filesystem::exists(attachment.url().filePath())) << row;
    }
    ++row;
  }
  EXPECT_TRUE(std::filesystem::exists(own));
  EXPECT_TRUE(std::filesystem::exists(temporary.path("attachments/night.png")));
  EXPECT_TRUE(std::filesystem::exists(temporary.path("attachments/night-1.png"))) << "replaces nothing";
}

TEST(NotificationFilesTest, WhatIsAttachedAfterTheNotificationWasShownAsItCameIsRemoved) {
  const support::TemporaryDirectory temporary;
  const support::ScopedEnvironment environment("TMPDIR", temporary.path());
  const backend::LoopbackServer server;
  std::shared_ptr<UNMutableNotificationContent> kept;
  ServiceExtensionHost host(
      [&] { return std::make_shared<ScriptedExtension>([](auto&, const auto&) {}, kept); },
      std::chrono::milliseconds(10));
  EXPECT_EQ(host.run(support::makeRequest({})).outcome, ServiceExtensionResult::Outcome::expired);
  EXPECT_TRUE(Activity::waitUntilNone(support::soon()));
  std::filesystem::path path;
  kept->setAttachments({downloaded(server, path)});
  EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace QXPlatform
