#include "QXPlatform/notifications/ServiceExtensionHost.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <future>
#include <string>
#include <utility>

#include "QXPlatform/libraries/network/SessionDirectory.h"
#include "tests/support/Deadline.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TemporaryDirectory.h"

namespace QXPlatform {
namespace {

// Hands nothing over before its time is about to end.
class LateExtension final : public UNNotificationServiceExtension {
 public:
  using Expired = std::function<void(const ContentHandler& handler)>;
  explicit LateExtension(Expired expired) : expired_(std::move(expired)) {}

  void didReceiveNotificationRequest(std::shared_ptr<const UNNotificationRequest>,
                                     ContentHandler contentHandler) override {
    handler_.set_value(std::move(contentHandler));
  }
  void serviceExtensionTimeWillExpire() override { expired_(handler_.get_future().get()); }

 private:
  const Expired expired_;
  std::promise<ContentHandler> handler_;
};

std::shared_ptr<const UNNotificationContent> contentTitled(
    std::string title, std::vector<UNNotificationAttachment> attachments = {}) {
  NotificationProperties properties;
  properties.title = std::move(title);
  properties.attachments = std::move(attachments);
  return std::make_shared<const UNNotificationContent>(std::move(properties));
}

std::shared_ptr<const UNNotificationRequest> request() {
  return std::make_shared<const UNNotificationRequest>(
      UNNotificationRequest{"i", contentTitled("as it came")});
}

TEST(ServiceExtensionHostTest, WhoIsToldThatTheTimeWillExpireHasTheLastSecondForTheContent) {
  const struct {
    LateExtension::Expired expired;
    int seconds;
    const char* title;
  } table[] = {
      {[](const ContentHandler& handler) { handler(contentTitled("as it stands")); }, 29, "as it stands"},
      {[](const ContentHandler&) {}, 30, "as it came"}};
  for (const auto& row : table) {
    support::InstalledManualClock clock;
    std::promise<void> started;
    ServiceExtensionHost host(
        [&] {
          started.set_value();
          return std::make_shared<LateExtension>(row.expired);
        },
        std::chrono::seconds(30));
    auto running = std::async(std::launch::async, [&] { return host.run(request()); });
    started.get_future().wait();
    const auto isDone = [&] {
      return running.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    EXPECT_EQ(clock.secondsUntil(isDone, row.seconds), row.seconds);
    const ServiceExtensionResult result = running.get();
    EXPECT_EQ(result.outcome, ServiceExtensionResult::Outcome::expired);
    EXPECT_EQ(result.content.title, row.title);
    EXPECT_LE(result.elapsed, std::chrono::seconds(30));
  }
}

TEST(ServiceExtensionHostTest, OfWhatComesTooLateOnlyDownloadsAreRemoved) {
  const std::string image = "\x89PNG\r\n\x1a\n";
  const support::TemporaryDirectory temporary;
  std::filesystem::create_directory(temporary.path("album"));
  const std::filesystem::path own = temporary.write("album/own.png", image);
  SessionDirectory session;
  std::string download;
  const int descriptor = session.createFile(download);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(write(descriptor, image.data(), image.size()), static_cast<ssize_t>(image.size()));
  close(descriptor);
  const std::filesystem::path thumbnail = std::filesystem::path(download).replace_filename("thumbnail.png");
  std::filesystem::rename(download, thumbnail);

  const auto tooLate = contentTitled(
      "too late", {*UNNotificationAttachment::make("own", URL::file(own.native())),
                   *UNNotificationAttachment::make("thumbnail", URL::file(thumbnail.native()))});
  support::InstalledManualClock clock;
  std::promise<void> started;
  ServiceExtensionHost host(
      [&] {
        started.set_value();
        return std::make_shared<LateExtension>([&](const ContentHandler& handler) {
          handler(contentTitled("in time"));
          handler(tooLate);
        });
      },
      std::chrono::seconds(30));
  auto running = std::async(std::launch::async, [&] { return host.run(request()); });
  started.get_future().wait();
  clock.advance(std::chrono::seconds(29));
  EXPECT_EQ(running.get().content.title, "in time");
  EXPECT_TRUE(support::eventually([&] { return !std::filesystem::exists(thumbnail.parent_path()); }));
  EXPECT_TRUE(std::filesystem::exists(own));
}

}  // namespace
}  // namespace QXPlatform
