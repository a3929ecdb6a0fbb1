#include "QXExtensionSDK/content/CarouselViewController.h"

#include <QAccessible>
#include <QDeadlineTimer>
#include <QMouseEvent>
#include <QTest>

#include "tests/QXExtensionSDK/content/ui/UITestKit.h"

namespace QXExtensionSDK {
namespace {

using support::Expanded;
using support::ImageServer;
using support::pumpUntil;
using support::ScopedLogRecorder;
using testing::ElementsAre;

// In the middle of the first image of a view of 360 points.
constexpr QPoint kImageMiddle(180, 100);

std::int64_t currentPanel(const Expanded& expanded) {
  return expanded.screen().viewModel().currentPanelIndex;
}

TEST(CarouselScreen, ShowsEachPanelsImageInTheOrderOfThePanels) {
  ImageServer server;
  Expanded expanded;
  std::promise<void> release;
  const std::string slow = server.serve(
      "/slow.png", {.body = support::encodedImage("PNG", {64, 36}, Qt::red)}, release.get_future());
  expanded.deliver(
      {{slow}, {server.serveColor("/fast.png", Qt::green)}, {server.serveColor("/never.png", Qt::blue)}});
  expanded.screen().nextButton().click();
  ASSERT_TRUE(expanded.waitForImage(1));
  EXPECT_EQ(expanded.image(0).imageLoadingState(), ImageLoadingState::downloading);
  EXPECT_EQ(expanded.colorAt(kImageMiddle), QColor(Qt::green));
  release.set_value();
  ASSERT_TRUE(expanded.waitForImage(0));
  EXPECT_EQ(expanded.colorAt(kImageMiddle), QColor(Qt::green));
  expanded.screen().backButton().click();
  EXPECT_EQ(expanded.colorAt(kImageMiddle), QColor(Qt::red));
  EXPECT_EQ(expanded.screen().panelView(2), nullptr);
  EXPECT_THAT(server.paths(), testing::UnorderedElementsAre("/slow.png", "/fast.png"));
}

TEST(CarouselScreen, KeepsOneHeightForAllPanels) {
  Expanded expanded;
  expanded.deliver(
      {{"u", "Short"}, {"u", std::string(300, 'W'), std::string(300, 'w')}, {"u", "", "Only a subtitle"}});
  const double height = expanded.host->contentSize().height;
  EXPECT_EQ(expanded.host->view().height(), height);
  for (int i = 0; i < 2; ++i) {
    expanded.screen().nextButton().click();
    EXPECT_EQ(expanded.host->contentSize().height, height);
  }
  Expanded single;
  single.deliver({{"u", "Short"}});
  EXPECT_LT(single.host->contentSize().height, height);
  EXPECT_TRUE(single.screen().nextButton().isHidden());
}

struct FailingImage {
  const char* name;
  backend::Response response;
  const char* logged;
};

TEST(CarouselScreen, TriesAFailedImageThreeTimesAndSaysWhy) {
  const std::string image = support::encodedImage("PNG", {64, 36}, Qt::red);
  const std::array<FailingImage, 4> cases{
      {{"not an image", {.body = "<html>"}, "Can't convert data to image"},
       {"truncated image", {.body = image.substr(0, image.size() / 2)}, "Can't convert data to image"},
       {"no data", {.body = ""}, "No data for image download"},
       {"dropped", {.fault = backend::Fault::closeWithoutAnswer}, "Failed to download image, error="}}};
  for (const FailingImage& failing : cases) {
    SCOPED_TRACE(failing.name);
    const ScopedLogRecorder log;
    ImageServer server;
    Expanded expanded;
    expanded.deliver({{server.serve("/bad", failing.response)}, {server.serveColor("/good", Qt::green)}});
    for (int round = 0; round < 4; ++round) {
      ASSERT_TRUE(expanded.waitForImage(0));
      expanded.screen().nextButton().click();
      expanded.screen().backButton().click();
    }
    EXPECT_EQ(expanded.image(0).imageLoadingState(), ImageLoadingState::failed);
    EXPECT_EQ(expanded.image(0).imageDownloadCount(), 3);
    EXPECT_TRUE(log->mentions(failing.logged));
    EXPECT_TRUE(log->has("Image download completion callback, Index=0"));
    EXPECT_EQ(expanded.colorAt({40, 40}), QColor(0xE5, 0xE5, 0xE5));
  }
}

TEST(CarouselScreen, TakesAnImageForItsBytesNotForItsStatusAndKeepsItsName) {
  ImageServer server;
  Expanded expanded;
  const std::string url =
      server.serve("/a", {.status = 500, .body = support::encodedImage("WEBP", {64, 36}, Qt::blue)});
  expanded.deliver({{url, "", "", "A bay"}});
  EXPECT_EQ(expanded.image(0).accessibleName(), "A bay");
  ASSERT_TRUE(expanded.waitForImage(0));
  EXPECT_EQ(expanded.image(0).imageLoadingState(), ImageLoadingState::success);
  EXPECT_EQ(expanded.image(0).accessibleName(), "A bay");
}

TEST(CarouselScreen, FetchesNothingForATextThatIsNoURL) {
  Expanded expanded;
  expanded.deliver({{"not a url", "Title", "", "What would be here"}});
  EXPECT_EQ(expanded.image(0).imageLoadingState(), ImageLoadingState::notStarted);
  EXPECT_EQ(expanded.image(0).imageDownloadCount(), 0);
}

TEST(CarouselScreen, KeepsTheSameImageWhenItIsRefreshed) {
  ImageServer server;
  Expanded expanded;
  const std::string same = server.serveColor("/same", Qt::red);
  expanded.deliver({{same, "Before"}, {server.serveColor("/old", Qt::green)}});
  ASSERT_TRUE(expanded.waitForImage(0));
  expanded.deliver({{same, "After"}, {server.serveColor("/new", Qt::blue)}});
  EXPECT_EQ(expanded.image(0).imageLoadingState(), ImageLoadingState::success);
  expanded.screen().nextButton().click();
  ASSERT_TRUE(expanded.waitForImage(1));
  EXPECT_EQ(expanded.colorAt(kImageMiddle), QColor(Qt::blue));
  EXPECT_THAT(server.paths(), ElementsAre("/same", "/new"));
}

// Columns in black and white by turns, as fine as the screen, are grey when they are drawn at another size.
TEST(CarouselScreen, DrawsAnImageSmoothlyAtAnotherSizeThanItWasDecodedFor) {
  ImageServer server;
  Expanded expanded;
  expanded.deliver({{"u"}});
  QImage columns(expanded.image(0).size() * 2, QImage::Format_RGB32);
  for (int x = 0; x < columns.width(); ++x) {
    for (int y = 0; y < columns.height(); ++y)
      columns.setPixelColor(x, y, x % 2 == 0 ? Qt::black : Qt::white);
  }
  expanded.deliver({{server.serve("/columns", {.body = support::encoded(columns, "PNG")})}});
  ASSERT_TRUE(expanded.waitForImage(0));
  auto& image = const_cast<CarouselImageView&>(expanded.image(0));
  const auto isGreySeen = [&] {
    const QImage drawn = image.grab().toImage();
    for (int x = 100; x < 200; ++x) {
      const int gray = qGray(drawn.pixel(x, 100));
      if (gray > 60 && gray < 200) return true;
    }
    return false;
  };
  EXPECT_FALSE(isGreySeen());
  image.setFrame({0, 0, image.width() * 2 / 3, image.height() * 2 / 3});
  EXPECT_TRUE(isGreySeen());
}

TEST(CarouselScreen, LeavesThePanelWhenARefreshHasNone) {
  const ScopedLogRecorder log;
  ImageServer server;
  const std::vector<support::PanelText> panels{{server.serveColor("/a", Qt::red), "One"}};
  Expanded expanded;
  expanded.deliver(panels);
  ASSERT_TRUE(expanded.waitForImage(0));
  const QImage drawn = expanded.drawn();
  expanded.deliverItems("[]");
  EXPECT_TRUE(log->has("Inavlid index in panel state setting"));
  EXPECT_EQ(expanded.drawn(), drawn);
  expanded.deliver(panels);
  EXPECT_THAT(server.paths(), ElementsAre("/a"));
  expanded.deliverItems("[{}]");
  expanded.deliverItems("[]");
  EXPECT_TRUE(expanded.host->isCollapsed());
}

TEST(CarouselScreen, KeepsTheShownPanelsRoomUntilAnotherIsShown) {
  ImageServer server;
  std::promise<void> release;
  const std::string slow = server.serve("/slow", {.body = ""}, release.get_future());
  Expanded expanded;
  expanded.deliver({{"u", "One"}, {"u", "Two"}, {slow, std::string(200, 'W'), "Below"}});
  for (int i = 0; i < 2; ++i) expanded.screen().nextButton().click();
  const auto height = [&] { return expanded.host->contentSize().height; };
  const double before = height();
  const QImage drawn = expanded.drawn().copy(0, 0, 720, 500);
  expanded.deliver({{"u"}, {"u"}});
  EXPECT_EQ(height(), before);
  EXPECT_EQ(expanded.drawn().copy(0, 0, 720, 500), drawn);
  EXPECT_EQ(expanded.screen().contentView().accessibleName().size(), 200 + 7);
  EXPECT_TRUE(expanded.screen().isAnyImageDownloading());
  release.set_value();
  EXPECT_TRUE(pumpUntil([&] { return !expanded.screen().isAnyImageDownloading(); }));
  expanded.screen().backButton().click();
  EXPECT_LT(height(), before);
  EXPECT_EQ(expanded.screen().contentView().accessibleName(), "panel 2 of 2");
}

// The top of each text of the panel that is shown; the alternative text is not among them.
std::vector<int> textTops(const Expanded& expanded) {
  std::vector<int> tops;
  const auto& panel = *expanded.screen().contentView().currentPanelView();
  for (const QObject* child : panel.children()) {
    const auto* label = dynamic_cast<const QXPlatform::UILabel*>(child);
    if (label != nullptr && !label->isHidden()) tops.push_back(label->y());
  }
  return tops;
}

TEST(CarouselScreen, KeepsTheTextsInTheSamePlacesOnAllPanels) {
  const std::string longTitle(200, 'W');
  const auto items = [](const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
      list += (list.empty() ? "" : ",") + (R"({"id":"p","md":{"ul":"u"})" + text + "}");
    }
    return "[" + list + "]";
  };
  const std::string title = R"(,"ti":{"tx":")" + longTitle + R"("})";
  const std::string subTitle = R"(,"sti":{"tx":"Below"})";
  Expanded expanded;
  expanded.deliverItems(items({title + subTitle, subTitle, R"(,"ti":{"tx":""})" + subTitle}));
  const std::vector<int> both = textTops(expanded);
  ASSERT_EQ(both.size(), 2U);
  expanded.screen().nextButton().click();
  EXPECT_THAT(textTops(expanded), ElementsAre(both[1]));
  expanded.screen().nextButton().click();
  EXPECT_EQ(textTops(expanded), both);

  Expanded apart;
  apart.deliverItems(items({title, subTitle}));
  EXPECT_EQ(apart.host->contentSize(), expanded.host->contentSize());
  Expanded onlySubTitles;
  onlySubTitles.deliverItems(items({subTitle, subTitle}));
  EXPECT_THAT(textTops(onlySubTitles), ElementsAre(both[0]));
}

TEST(CarouselScreen, AdvancesByItselfOnceAndRestsOnTheLastPanel) {
  Expanded expanded;
  expanded.deliver({{"u"}, {"u"}, {"u"}}, R"("tms":20,)");
  EXPECT_EQ(expanded.screen().timerState(), TimerState::running);
  ASSERT_TRUE(pumpUntil([&] { return expanded.screen().timerState() == TimerState::stopped; }));
  EXPECT_EQ(currentPanel(expanded), 2);
  expanded.screen().backButton().click();
  QTest::qWait(80);
  EXPECT_EQ(currentPanel(expanded), 1);
}

// The timer's pace is that of its beginning, whatever a later notification says.
TEST(CarouselScreen, StandsStillWhileItIsCollapsedAndGoesOnAtItsPace) {
  for (const char* pace : {"", R"("tms":-5,)", R"("tms":600000,)"}) {
    SCOPED_TRACE(pace);
    Expanded quick;
    quick.deliver({{"u"}, {"u"}}, R"("tms":20,)");
    quick.deliverItems("[{}]");
    QTest::qWait(60);
    EXPECT_TRUE(quick.host->isCollapsed());
    EXPECT_EQ(currentPanel(quick), 0);
    quick.deliver({{"u"}, {"u"}}, pace);
    EXPECT_TRUE(pumpUntil([&] { return currentPanel(quick) == 1; }, std::chrono::seconds(2)));
  }
  Expanded slow;
  slow.deliver({{"u"}, {"u"}}, R"("tms":600000,)");
  slow.deliverItems("[{}]");
  slow.deliver({{"u"}, {"u"}});
  QTest::qWait(60);
  EXPECT_EQ(currentPanel(slow), 0);
}

// Presses and releases where a finger would, on whatever stands there.
void tapAt(const Expanded& expanded, const QPoint& point, Qt::MouseButton button = Qt::LeftButton) {
  QWidget& view = expanded.host->view();
  QWidget* target = view.childAt(point);
  ASSERT_NE(target, nullptr);
  QTest::mouseClick(target, button, {}, target->mapFrom(&view, point));
  support::finishTaps();
}

TEST(CarouselScreen, OpensAtATapOnThePanelButNotNearADisabledArrow) {
  Expanded expanded;
  expanded.deliver({{"u", "One"}, {"u", "Two"}});
  QWidget& view = expanded.host->view();
  view.show();
  const QRect backArea(expanded.screen().backButton().mapTo(&view, QPoint()),
                       expanded.screen().backButton().size());
  const QRect panelArea(expanded.screen().contentView().mapTo(&view, QPoint()),
                        expanded.screen().contentView().size());
  // Over the panel, and yet within the disabled arrow's reach.
  const QRect contested = backArea & panelArea;
  ASSERT_FALSE(contested.isEmpty());
  tapAt(expanded, contested.center());
  EXPECT_FALSE(expanded.host->isDefaultActionPerformed());
  EXPECT_EQ(currentPanel(expanded), 0);
  EXPECT_TRUE(expanded.screen().backButton().pointInside({-16, -16}));
  EXPECT_TRUE(expanded.screen().backButton().pointInside({47, 47}));
  EXPECT_FALSE(expanded.screen().backButton().pointInside({-17, 0}));
  EXPECT_FALSE(expanded.screen().backButton().pointInside({0, 48}));

  // Neither a drag nor another button's click.
  QWidget* panel = &expanded.screen().contentView();
  QTest::mousePress(panel, Qt::LeftButton, {}, kImageMiddle);
  QTest::mouseRelease(panel, Qt::LeftButton, {}, kImageMiddle + QPoint(20, 0));
  tapAt(expanded, kImageMiddle, Qt::RightButton);
  EXPECT_FALSE(expanded.host->isDefaultActionPerformed());
  tapAt(expanded, kImageMiddle);
  EXPECT_TRUE(expanded.host->isDefaultActionPerformed());

  const QRect nextArea(expanded.screen().nextButton().mapTo(&view, QPoint()),
                       expanded.screen().nextButton().size());
  tapAt(expanded, (nextArea & panelArea).center());
  EXPECT_EQ(currentPanel(expanded), 1);
}

// On the screen and with the keyboard's attention.
void showActive(QWidget& window) {
  window.show();
  window.activateWindow();
  ASSERT_TRUE(pumpUntil([&] { return window.isActiveWindow(); }));
}

void tabToPanel(const Expanded& expanded) {
  expanded.screen().backButton().setFocus(Qt::OtherFocusReason);
  expanded.screen().nextButton().setFocus(Qt::OtherFocusReason);
  expanded.screen().contentView().setFocus(Qt::TabFocusReason);
}

// The key once more without having been let go.
void repeatKey(int key) {
  QKeyEvent again(QEvent::KeyPress, key, {}, {}, true);
  QApplication::sendEvent(QApplication::focusWidget(), &again);
  support::finishTaps();
}

bool isRingSeen(const Expanded& expanded) {
  return expanded.colorAt({4, 100}) == expanded.host->view().palette().color(QPalette::Highlight);
}

TEST(CarouselScreen, IsUsedFromTheKeyboard) {
  for (const bool isMirrored : {false, true}) {
    SCOPED_TRACE(isMirrored ? "right to left" : "left to right");
    QApplication::setLayoutDirection(isMirrored ? Qt::RightToLeft : Qt::LeftToRight);
    Expanded expanded;
    expanded.deliver({{"u", "One"}, {"u", "Two"}, {"u", "Three"}});
    showActive(expanded.host->view());
    QWidget& panel = expanded.screen().contentView();
    panel.setFocus();
    const auto forward = isMirrored ? Qt::Key_Left : Qt::Key_Right;
    const auto backward = isMirrored ? Qt::Key_Right : Qt::Key_Left;
    QTest::keyClick(QApplication::focusWidget(), forward);
    EXPECT_TRUE(isRingSeen(expanded));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), &expanded.screen().backButton());
    QTest::keyClick(QApplication::focusWidget(), forward);
    EXPECT_EQ(currentPanel(expanded), 2);
    QTest::keyClick(QApplication::focusWidget(), backward);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(currentPanel(expanded), 0);
    EXPECT_EQ(QApplication::focusWidget(), &expanded.screen().nextButton())
        << "not on the arrow that is left";
    repeatKey(Qt::Key_Return);
    EXPECT_EQ(currentPanel(expanded), 0);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(currentPanel(expanded), 2);
    EXPECT_EQ(QApplication::focusWidget(), &expanded.screen().backButton());
    EXPECT_FALSE(expanded.host->isDefaultActionPerformed());

    panel.setFocus();
    for (const auto key : {Qt::Key_Return, Qt::Key_Space}) repeatKey(key);
    EXPECT_FALSE(expanded.host->isDefaultActionPerformed());
    QWidget& view = expanded.screen().view();
    QTest::keyClick(&view, Qt::Key_A);
    support::finishTaps();
    EXPECT_FALSE(expanded.host->isDefaultActionPerformed());
    QTest::keyClick(isMirrored ? &view : &panel, Qt::Key_Enter);
    support::finishTaps();
    EXPECT_TRUE(expanded.host->isDefaultActionPerformed());
  }
  QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST(CarouselScreen, KeepsTheFocusInSightWhenItsWindowBecomesActiveAgain) {
  Expanded expanded;
  expanded.deliver({{"u", "One"}, {"u", "Two"}});
  showActive(expanded.host->view());
  tabToPanel(expanded);
  EXPECT_TRUE(isRingSeen(expanded));
  {
    QWidget other;
    showActive(other);
    EXPECT_FALSE(isRingSeen(expanded));
  }
  showActive(expanded.host->view());
  EXPECT_TRUE(isRingSeen(expanded));
  expanded.screen().nextButton().setFocus(Qt::TabFocusReason);
  expanded.screen().contentView().setFocus(Qt::MouseFocusReason);
  EXPECT_FALSE(isRingSeen(expanded));
}

TEST(CarouselScreen, IsMirroredFromRightToLeft) {
  const auto draw = [](Qt::LayoutDirection direction, int& back) {
    QApplication::setLayoutDirection(direction);
    Expanded expanded;
    expanded.deliver({{"no url"}, {"no url"}, {"no url"}});
    back = expanded.screen().backButton().mapTo(&expanded.host->view(), QPoint()).x();
    // The bar with its arrows and dots.
    return expanded.drawn().copy(0, expanded.drawn().height() - 90, 720, 80);
  };
  int left = 0;
  int right = 0;
  const QImage expected = draw(Qt::LeftToRight, left).mirrored(true, false);
  const QImage actual = draw(Qt::RightToLeft, right);
  QApplication::setLayoutDirection(Qt::LeftToRight);
  EXPECT_LT(left, right);
  int different = 0;
  for (int i = 0; i < 80 * 720; ++i) {
    const QPoint at(i % 720, i / 720);
    if (std::abs(qGray(expected.pixel(at)) - qGray(actual.pixel(at))) > 64) ++different;
  }
  EXPECT_LT(different, 40) << "but for rounding, the mirror image";
}

TEST(CarouselScreen, SlidesOnlyWhereItIsSeenAndMotionIsWanted) {
  const support::ScopedEnvironment motion("QX_REDUCE_MOTION", "0");
  Expanded expanded;
  expanded.deliver({{"u", "One"}, {"u", "Two"}});
  expanded.screen().nextButton().click();
  EXPECT_FALSE(expanded.screen().contentView().isSliding());
  showActive(expanded.host->view());
  tabToPanel(expanded);
  expanded.screen().backButton().click();
  EXPECT_TRUE(expanded.screen().contentView().isSliding());
  EXPECT_FALSE(isRingSeen(expanded));
  expanded.screen().nextButton().click();
  ASSERT_TRUE(pumpUntil([&] { return !expanded.screen().contentView().isSliding(); }));
  EXPECT_TRUE(isRingSeen(expanded));
  EXPECT_EQ(expanded.screen().panelView(1)->pos(), expanded.screen().contentView().panelFrame().topLeft());
  EXPECT_EQ(expanded.screen().panelView(0)->parent(), nullptr);

  const support::ScopedEnvironment noMotion("QX_REDUCE_MOTION", "1");
  expanded.screen().backButton().click();
  EXPECT_FALSE(expanded.screen().contentView().isSliding());
}

std::unique_ptr<QAccessibleInterface, void (*)(QAccessibleInterface*)> accessible(QWidget* widget) {
  return {QAccessible::queryAccessibleInterface(widget), [](QAccessibleInterface*) {}};
}

// Every node below, "role: name", in order; without a name only those that hold others are left out.
void describe(QAccessibleInterface* node, std::vector<std::string>& lines) {
  if (node->state().invisible) return;
  const QString name = node->text(QAccessible::Name);
  const bool isTold = !name.isEmpty() || node->childCount() == 0;
  if (isTold) lines.push_back(std::to_string(node->role()) + ": " + name.toStdString());
  for (int i = 0; i < node->childCount(); ++i) describe(node->child(i), lines);
}

std::string node(QAccessible::Role role, const char* name) {
  return std::to_string(role) + ": " + name;
}

TEST(CarouselScreen, TellsAssistiveTechnologyWhatItShows) {
  Expanded expanded;
  expanded.deliver({{"no url", "One", "First", "A bay at sunrise"}, {"no url", "Two", "", "A forest"}});
  expanded.host->view().show();
  expanded.screen().nextButton().click();
  std::vector<std::string> lines;
  describe(accessible(&expanded.host->view()).get(), lines);
  EXPECT_THAT(lines,
              testing::UnorderedElementsAre(
                  node(QAccessible::Grouping, "Carousel"), node(QAccessible::Button, "Two"),
                  node(QAccessible::Graphic, "A forest"), node(QAccessible::Indicator, "panel 2 of 2"),
                  node(QAccessible::Button, "Previous panel"), node(QAccessible::Button, "Next panel")));

  auto* panel = accessible(&expanded.screen().contentView())->actionInterface();
  ASSERT_NE(panel, nullptr);
  panel->doAction(QAccessibleActionInterface::pressAction());
  support::finishTaps();
  EXPECT_TRUE(expanded.host->isDefaultActionPerformed());
  accessible(&expanded.screen().backButton())
      ->actionInterface()
      ->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(pumpUntil([&] { return currentPanel(expanded) == 0; }));
}

}  // namespace
}  // namespace QXExtensionSDK
