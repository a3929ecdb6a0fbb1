#include "QXExtensionSDK/content/VTQXNotificationViewController.h"

#include <QTest>

#include "QXPlatform/ui/ImageDecoding.h"
#include "tests/QXExtensionSDK/content/ui/UITestKit.h"

namespace QXExtensionSDK {
namespace {

using support::Expanded;
using support::ImageServer;
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
    expanded.host->deliver(support::requestOf(unshowable.userInfo));
    EXPECT_EQ(expanded.host->contentSize(), (QXPlatform::Size{360, 1}));
    for (const std::string& line : unshowable.logged) EXPECT_TRUE(log->has(line)) << line;
  }
}

TEST(ContentExtension, StaysCollapsedForAnotherSendersNotification) {
  Expanded expanded;
  expanded.deliver({{"u", "One"}, {"u", "Two"}, {"u", "Three"}}, R"("tms":10,)");
  expanded.host->view().show();
  expanded.host->deliver(support::requestOf(R"({"_sid":"OTHER"})"));
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

TEST(ContentExtension, AsksTheHostForTheLogLevelAtEachNotification) {
  Logger::setGlobalLoglevel(2);
  {
    const auto silent = std::make_shared<VTQXNotificationViewController>();
    QXPlatform::ContentExtensionHost host(silent, 360);
    host.deliver(support::requestOf("{}"));
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

// Closes, collapses, refreshes and closes again at every moment of a download and of the timer. What a late
// callback would touch is freed by then, which the address sanitizer sees.
TEST(CarouselLifetime, LeavesNoCallbackBehindAThousandTimes) {
  ImageServer server;
  const std::string image = server.serveColor("/a", Qt::red);
  const std::string slow = server.serve("/b", {.body = support::encodedImage("JPEG", {640, 360}, Qt::blue),
                                               .delay = std::chrono::milliseconds(2)});
  std::mt19937 random(20240501);
  const auto chance = [&](int of) { return static_cast<int>(random() % static_cast<unsigned>(of)); };
  for (int round = 0; round < 1000; ++round) {
    Expanded expanded;
    expanded.deliver({{image, "One"}, {slow, "Two"}, {image, "Three"}}, R"("tms":1,)");
    if (chance(2) == 0) expanded.host->view().show();
    for (int step = chance(4); step > 0; --step) {
      switch (chance(5)) {
        case 0:
          expanded.screen().nextButton().click();
          break;
        case 1:
          expanded.deliverItems("[{}]");
          break;
        case 2:
          expanded.deliver({{slow, "Other"}, {image, "Panels"}});
          break;
        case 3:
          expanded.screen().tapGesturePerformed();
          break;
        default:
          QTest::qWait(chance(3));
      }
    }
  }
  QTest::qWait(50);
}

TEST(CarouselLifetime, TheExtensionMayBeClosedFromWithinItsOwnCallbacks) {
  struct Closing final : CarouselViewControllerDelegate {
    void backButtonTapped() override { expanded.reset(); }
    void nextButtonTapped() override { expanded.reset(); }
    void panelTapped() override { expanded.reset(); }
    std::unique_ptr<Expanded> expanded;
  };
  const auto open = [] {
    auto closing = std::make_shared<Closing>();
    closing->expanded = std::make_unique<Expanded>();
    closing->expanded->deliver({{"u", "One"}, {"u", "Two"}}, R"("tms":5,)");
    closing->expanded->screen().setDelegate(closing);
    closing->expanded->host->view().show();
    return closing;
  };
  using Screen = CarouselViewController;
  const std::array<std::function<void(Screen&)>, 5> ways{
      [](Screen& screen) { screen.nextButton().click(); },
      [](Screen& screen) { QTest::mouseClick(&screen.contentView(), Qt::LeftButton); },
      [](Screen& screen) { QTest::keyClick(&screen.contentView(), Qt::Key_Return); },
      [](Screen& screen) { QTest::keyClick(&screen.contentView(), Qt::Key_Right); },
      [](Screen&) {}};  // the timer
  for (const auto& close : ways) {
    const auto closing = open();
    close(closing->expanded->screen());
    EXPECT_TRUE(support::pumpUntil([&] { return closing->expanded == nullptr; }));
  }
}

// Ends the application while an image is being decoded and another waits; exits with what went wrong, or 0.
[[noreturn]] void endWhileDecoding() {
  // Takes its two seconds of processor.
  const auto bytes = std::make_shared<const QXPlatform::Data>(support::encodedSlowImage());
  std::promise<void> begun;
  auto inUse = std::make_shared<int>();
  const std::weak_ptr decoding = inUse;
  bool isNextBegun = false;
  int asked = 0;
  const auto ignore = [](const QImage&) {};
  auto isWanted = [&begun, &asked, inUse = std::move(inUse)] {
    if (++asked == 2) begun.set_value();
    return true;
  };
  QXPlatform::decodeImageFillingAsync(bytes, {1200, 800}, std::move(isWanted), ignore);
  QXPlatform::decodeImageFillingAsync(
      bytes, {1200, 800}, [&] { return isNextBegun = true; }, ignore);
  begun.get_future().wait();
  const auto begin = std::chrono::steady_clock::now();
  delete qApp;
  const bool hasWaited = std::chrono::steady_clock::now() - begin > std::chrono::milliseconds(1500);
  std::exit(!decoding.expired() ? 2 : isNextBegun ? 3 : hasWaited ? 4 : 0);
}

TEST(CarouselLifetimeDeathTest, TheApplicationsEndWaitsForNoImage) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(endWhileDecoding(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace QXExtensionSDK
