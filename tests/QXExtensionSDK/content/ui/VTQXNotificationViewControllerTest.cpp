#include "QXExtensionSDK/content/VTQXNotificationViewController.h"

#include <array>

#include "QXPlatform/notifications/UNUserNotificationCenter.h"
#include "tests/QXExtensionSDK/content/ui/UITestKit.h"

namespace QXExtensionSDK {
namespace {

using support::Expanded;
using support::ScopedLogRecorder;

using Option = QXPlatform::UNNotificationContentExtensionResponseOption;

struct Unshowable {
  const char* name;
  const char* userInfo;
  std::vector<std::string> logged;
};

TEST(ContentExtension, TakesNoRoomForWhatItCannotShow) {
  const std::array<Unshowable, 4> cases{
      {{"another sender",
        R"({"_sid":"OTHER","_rf":{"vt":{"t":"0","it":[]}}})",
        {"Non VTQX PN in content extension"}},
       {"another template",
        R"({"_sid":"vtqx","_rf":{"vt":{"t":"1","it":[]}}})",
        {"Invalid view template raw value", "Invalid View Template Type",
         "Can't find a suitable Coordinator"}},
       {"nothing rich",
        R"({"_sid":"VTQX"})",
        {"Rich features payload missing", "Invalid View Template Type", "Can't find a suitable Coordinator"}},
       {"undecodable",
        R"({"_sid":"VTQX","_rf":{"vt":{"t":"0","it":[{"id":"p"}]}}})",
        {"Parsing returned a nil model object"}}}};
  for (const Unshowable& unshowable : cases) {
    SCOPED_TRACE(unshowable.name);
    const ScopedLogRecorder log;
    Expanded expanded;
    expanded.host->deliver(support::makeRequest(support::dictionary(unshowable.userInfo)));
    EXPECT_EQ(expanded.host->contentSize(), (QXPlatform::Size{360, 1}));
    for (const std::string& line : unshowable.logged) EXPECT_TRUE(log->has(line)) << line;
  }
}

TEST(ContentExtension, ShowsLaterNotificationsOnTheSameScreen) {
  Expanded expanded;
  expanded.deliver({{"u", "One"}, {"u", "Two"}});
  const auto* screen = &expanded.screen();
  expanded.screen().nextButton().click();
  expanded.deliverItems("[{}]");
  EXPECT_TRUE(expanded.host->isCollapsed());
  expanded.deliver({{"u", "Three"}, {"u", "Four"}});
  EXPECT_FALSE(expanded.host->isCollapsed());
  EXPECT_EQ(&expanded.screen(), screen);
  EXPECT_EQ(screen->viewModel().currentPanelIndex, 1);
}

TEST(ContentExtension, StaysCollapsedForAnotherSendersNotification) {
  Expanded expanded;
  expanded.deliver({{"u", "One"}, {"u", "Two"}, {"u", "Three"}}, R"("tms":10,)");
  expanded.host->view().show();
  expanded.host->deliver(support::makeRequest(support::dictionary(R"({"_sid":"OTHER"})")));
  EXPECT_FALSE(
      support::pumpUntil([&] { return !expanded.host->isCollapsed(); }, std::chrono::milliseconds(80)));
  expanded.screen().nextButton().click();
  expanded.screen().tapGesturePerformed();
  support::finishTaps();
  EXPECT_EQ(expanded.host->contentSize(), (QXPlatform::Size{360, 1}));
  EXPECT_EQ(expanded.screen().viewModel().currentPanelIndex, 0);
  EXPECT_FALSE(expanded.host->isDefaultActionPerformed());
  expanded.deliver({{"u", "Four"}, {"u", "Five"}}, R"("tms":10,)");
  EXPECT_FALSE(expanded.host->isCollapsed());
  EXPECT_TRUE(support::pumpUntil([&] { return expanded.screen().timerState() == TimerState::stopped; }));
}

TEST(ContentExtension, ForwardsEveryResponseOnceThereIsACarousel) {
  const ScopedLogRecorder log;
  Expanded expanded;
  EXPECT_EQ(expanded.host->respond(), Option::doNotDismiss);
  expanded.deliver({{"u", "One"}});
  EXPECT_TRUE(log->has("ViewTemplate type is carousel"));
  EXPECT_EQ(expanded.host->respond(), Option::dismissAndForwardAction);
  EXPECT_TRUE(log->has("VTQXNotificationViewController notification response option is=2"));
}

TEST(ContentExtension, OpensTheAppAndLeavesNoNotificationBehindAfterATap) {
  auto& center = QXPlatform::UNUserNotificationCenter::current();
  Expanded expanded;
  expanded.deliver({{"u", "One"}});
  EXPECT_EQ(center.deliveredNotifications().size(), 1U);
  expanded.screen().tapGesturePerformed();
  ASSERT_TRUE(support::pumpUntil([&] { return expanded.host->isDefaultActionPerformed(); }));
  EXPECT_TRUE(center.deliveredNotifications().empty());
}

TEST(ContentExtension, AsksTheHostForTheLogLevelAtEachNotification) {
  Logger::setGlobalLoglevel(2);
  {
    const auto silent = std::make_shared<VTQXNotificationViewController>();
    QXPlatform::ContentExtensionHost host(silent, 360);
    host.deliver(support::makeRequest(support::dictionary("{}")));
    EXPECT_EQ(Logger::globalLoglevel(), 4);
  }
  Expanded expanded;
  expanded.deliverItems("[]");
  EXPECT_EQ(Logger::globalLoglevel(), 0);
}

TEST(ContentExtension, GivesTheScreenTheWidthThereIs) {
  for (const int width : {1, 40, 320, 1000}) {
    Expanded expanded(width);
    expanded.deliver({{"no url", "One", "Two", "Alternative"}, {"no url"}});
    EXPECT_EQ(expanded.host->contentSize().width, width);
    EXPECT_EQ(expanded.screen().view().width(), width);
    EXPECT_EQ(expanded.drawn().width(), 2 * width);
  }
}

}  // namespace
}  // namespace QXExtensionSDK
