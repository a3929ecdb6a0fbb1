#include "QXPlatform/notifications/UNNotificationContent.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

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

}  // namespace
}  // namespace QXPlatform
