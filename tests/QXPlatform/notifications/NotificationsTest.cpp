#include <sys/stat.h>
#include <unistd.h>

#include "QXPlatform/notifications/ServiceExtensionHost.h"
#include "QXPlatform/notifications/UNNotificationAttachment.h"
#include "QXPlatform/notifications/UNNotificationContent.h"
#include "QXTestSupport/ManualClock.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

TEST(UNNotificationContentTest, AMutableCopyLeavesTheOriginalAlone) {
  const UNNotificationContent original({.title = "title",
                                        .subtitle = "subtitle",
                                        .body = "body",
                                        .badge = 3,
                                        .sound = "sound",
                                        .userInfo = {{"key", "value"}},
                                        .attachments = {}});
  const auto copy = UNMutableNotificationContent::mutableCopy(&original);
  EXPECT_EQ(copy->title(), "title");
  EXPECT_EQ(copy->subtitle(), "subtitle");
  EXPECT_EQ(copy->body(), "body");
  EXPECT_EQ(copy->badge(), 3);
  EXPECT_EQ(copy->sound(), "sound");
  EXPECT_EQ(copy->userInfo(), original.userInfo());

  copy->setTitle("other");
  copy->setBadge(std::nullopt);
  copy->setUserInfo({});
  const NotificationProperties now = copy->snapshot();
  EXPECT_EQ(now.title, "other");
  EXPECT_EQ(now.badge, std::nullopt);
  EXPECT_TRUE(now.userInfo.empty());
  EXPECT_EQ(original.title(), "title");
  EXPECT_EQ(original.userInfo().size(), 1U);
  EXPECT_EQ(UNMutableNotificationContent::mutableCopy(nullptr), nullptr);
}

TEST(UNNotificationContentTest, PropertiesAreReplacedWhileOthersReadThem) {
  UNMutableNotificationContent content(NotificationProperties{});
  const std::string longA(100, 'a');
  const std::string longB(200, 'b');
  content.setTitle(longA);
  std::vector<std::thread> threads;
  for (const std::string& text : {longA, longB}) {
    threads.emplace_back([&content, text] {
      for (int i = 0; i < 2000; ++i) {
        content.setTitle(text);
        content.setUserInfo({{"key", text}});
      }
    });
  }
  for (int i = 0; i < 2000; ++i) {
    const std::string title = content.title();
    ASSERT_TRUE(title == longA || title == longB);
    const NotificationProperties all = content.snapshot();
    ASSERT_TRUE(all.userInfo.empty() || all.userInfo.find("key")->string()->size() >= 100);
  }
  for (std::thread& thread : threads) thread.join();
}

constexpr std::uintmax_t kMegabyte = std::uintmax_t{1024} * 1024;

class UNNotificationAttachmentTest : public testing::Test {
 protected:
  // The error text of an attachment of that file; empty when it is made.
  std::string errorFor(const std::string& name) const {
    const auto attachment = UNNotificationAttachment::make("id", URL::file(directory_.path(name)));
    return attachment.ok() ? "" : attachment.error().message;
  }
  // An image's first bytes and then no blocks, so that the large ones cost nothing.
  void makeFile(const std::string& name, std::uintmax_t size) const {
    directory_.write(name, "\xff\xd8\xff");
    std::filesystem::resize_file(directory_.path(name), size);
  }

  support::TemporaryDirectory directory_;
};

TEST_F(UNNotificationAttachmentTest, TakesTheTypesThatCanBeShownUpToTheirSize) {
  const std::vector<std::pair<std::vector<std::string>, std::uintmax_t>> kinds{
      {{"jpg", "jpeg", "png", "gif", "JPG", "Png"}, 10 * kMegabyte},
      {{"aif", "aiff", "wav", "mp3", "m4a"}, 5 * kMegabyte},
      {{"mpg", "mpeg", "mp4", "m4v", "avi"}, 50 * kMegabyte},
  };
  for (const auto& [extensions, most] : kinds) {
    for (const std::string& extension : extensions) {
      const std::string name = "media." + extension;
      makeFile(name, 3);
      EXPECT_EQ(errorFor(name), "");
      makeFile(name, most);
      EXPECT_EQ(errorFor(name), "");
      makeFile(name, most + 1);
      EXPECT_NE(errorFor(name).find("larger than the " + std::to_string(most / kMegabyte) + " MB"),
                std::string::npos);
    }
  }
}

TEST_F(UNNotificationAttachmentTest, SaysWhyAFileIsRefused) {
  makeFile("empty.png", 0);
  makeFile("page.html", 1);
  makeFile("none", 1);
  makeFile(".png", 1);
  makeFile("dot.", 1);
  makeFile("long.pngx", 1);
  makeFile("real.png", 3);
  makeFile("short.png", 2);
  directory_.write("page.png", "<html></html>");
  directory_.write("webp.png", "RIFF....WEBP");
  std::filesystem::create_symlink("real.png", directory_.path("link.png"));
  std::filesystem::create_symlink("nowhere.png", directory_.path("dangling.png"));
  std::filesystem::create_directory(directory_.path("directory.png"));
  ASSERT_EQ(mkfifo(directory_.path("fifo.png").c_str(), 0600), 0);
  const std::vector<std::pair<std::string, std::string>> table{
      {"missing.png", "the file does not exist"},
      {"real.png/below.png", "the file does not exist"},
      {"empty.png", "the file is empty"},
      {"short.png", "it is not an image"},
      {"page.png", "it is not an image"},
      {"webp.png", "it is not an image"},
      {"page.html", "its type is not one that can be shown"},
      {"none", "its type is not one that can be shown"},
      {".png", "its type is not one that can be shown"},
      {"dot.", "its type is not one that can be shown"},
      {"long.pngx", "its type is not one that can be shown"},
      {"link.png", "it is not a regular file"},
      {"dangling.png", "it is not a regular file"},
      {"directory.png", "it is not a regular file"},
      {"fifo.png", "it is not a regular file"},
  };
  for (const auto& [name, reason] : table) {
    const std::string file = std::filesystem::path(name).filename();
    EXPECT_EQ(errorFor(name),
              std::string("Attachment \"").append(file).append("\" refused: ").append(reason));
  }
}

TEST_F(UNNotificationAttachmentTest, KeepsIdentifierAndURLOfAFileURLOnly) {
  makeFile("an image #1.png", 3);
  const URL url = URL::file(directory_.path("an image #1.png"));
  const auto attachment = UNNotificationAttachment::make("picture", url);
  ASSERT_TRUE(attachment.ok());
  EXPECT_EQ(attachment->identifier(), "picture");
  EXPECT_EQ(attachment->url(), url);
  const auto remote = UNNotificationAttachment::make("picture", *URL::parse("https://example.com/image.png"));
  ASSERT_FALSE(remote.ok());
  EXPECT_EQ(remote.error().message, "Attachment is not a file URL");
}

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

std::shared_ptr<const UNNotificationContent> contentTitled(std::string title) {
  NotificationProperties properties;
  properties.title = std::move(title);
  return std::make_shared<const UNNotificationContent>(std::move(properties));
}

class ServiceExtensionHostTest : public testing::Test {
 protected:
  // Begins a run; returns when it has its extension.
  std::future<ServiceExtensionResult> run(LateExtension::Expired expired) {
    started_ = {};
    host_.emplace(
        [this, expired = std::move(expired)] {
          started_.set_value();
          return std::make_shared<LateExtension>(expired);
        },
        std::chrono::seconds(30));
    auto running = std::async(std::launch::async, [this] {
      return host_->run(support::makeRequest({{"a", 1}}));
    });
    started_.get_future().wait();
    return running;
  }

  QXTestSupport::ManualClock clock_;
  std::promise<void> started_;
  std::optional<ServiceExtensionHost> host_;
};

TEST_F(ServiceExtensionHostTest, WhoIsToldThatTheTimeWillExpireHasTheLastSecondForTheContent) {
  const struct {
    LateExtension::Expired expired;
    int seconds;
    const char* title;
  } table[] = {
      {[](const ContentHandler& handler) { handler(contentTitled("as it stands")); }, 29, "as it stands"},
      {[](const ContentHandler&) {}, 30, "Title"}};
  for (const auto& row : table) {
    auto running = run(row.expired);
    const auto isDone = [&] {
      return running.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    EXPECT_EQ(clock_.secondsUntil(isDone, row.seconds), row.seconds);
    const ServiceExtensionResult result = running.get();
    EXPECT_EQ(result.outcome, ServiceExtensionResult::Outcome::expired);
    EXPECT_EQ(result.content.title, row.title);
    EXPECT_LE(result.elapsed, std::chrono::seconds(30));
  }
}

}  // namespace
}  // namespace QXPlatform
