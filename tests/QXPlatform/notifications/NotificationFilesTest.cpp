#include "QXPlatform/notifications/ServiceExtensionHost.h"

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/network/URLSession.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Exchange.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"
#include "tools/backend/Panels.h"

namespace QXPlatform {
namespace {

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
