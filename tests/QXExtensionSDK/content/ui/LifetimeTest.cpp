#include <QTest>
#include <cstdlib>
#include <future>
#include <random>

#include "QXPlatform/ui/ImageDecoding.h"
#include "tests/QXExtensionSDK/content/ui/UITestKit.h"

namespace QXExtensionSDK {
namespace {

using support::Expanded;
using support::ImageServer;

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
  auto closing = open();
  closing->expanded->screen().nextButton().click();
  EXPECT_EQ(closing->expanded, nullptr);
  closing = open();
  QTest::mouseClick(&closing->expanded->screen().contentView(), Qt::LeftButton);
  EXPECT_EQ(closing->expanded, nullptr);
  closing = open();
  QTest::keyClick(&closing->expanded->screen().contentView(), Qt::Key_Return);
  EXPECT_EQ(closing->expanded, nullptr);
  closing = open();
  QTest::keyClick(&closing->expanded->screen().contentView(), Qt::Key_Right);
  EXPECT_EQ(closing->expanded, nullptr);
  closing = open();
  EXPECT_TRUE(support::pumpUntil([&] { return closing->expanded == nullptr; }));
}

// Ends the application while an image is being decoded and another waits; exits with what went wrong, or 0.
[[noreturn]] void endWhileDecoding() {
  const auto bytes =
      std::make_shared<const QXPlatform::Data>(support::encodedImage("PNG", {9000, 9000}, Qt::red));
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
  const bool hasWaited = std::chrono::steady_clock::now() - begin > std::chrono::milliseconds(500);
  std::exit(!decoding.expired() ? 2 : isNextBegun ? 3 : hasWaited ? 4 : 0);
}

TEST(CarouselLifetimeDeathTest, TheApplicationsEndWaitsForNoImage) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(endWhileDecoding(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace QXExtensionSDK
