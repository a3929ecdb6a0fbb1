#include "QXPlatform/ui/Appearance.h"
#include "QXPlatform/ui/UILabel.h"
#include "QXPlatform/ui/UIPageControl.h"
#include "tests/QXExtensionSDK/content/ui/UITestKit.h"

namespace QXExtensionSDK {
namespace {

using support::Expanded;
using support::ImageServer;

// A panel whose image cannot be loaded, over a colour and with an alternative text in another.
std::string brokenPanel(const std::string& altText, const std::string& textColor,
                        const std::string& background) {
  return R"([{"id":"p","md":{"ul":"not a url","s":{"bgc":")" + background + R"("},"at":{"tx":")" + altText +
         R"(","s":{"fc":")" + textColor + R"("}}}}])";
}

TEST(CarouselLooks, KeepsABrokenImagesSignAndTextInsideItsPlace) {
  for (const int width : {112, 150, 240, 360}) {
    Expanded expanded(width);
    expanded.deliverItems(brokenPanel(std::string(40, 'W') + " and so on", "000000", "E5E5E5"));
    int parts = 0;
    for (const QObject* child : expanded.image(0).children()) {
      const auto* view = qobject_cast<const QWidget*>(child);
      if (view == nullptr || view->isHidden()) continue;
      EXPECT_TRUE(expanded.image(0).rect().contains(view->geometry())) << width;
      EXPECT_GE(view->height(), 15) << width;
      ++parts;
    }
    EXPECT_EQ(parts, 2) << width;
  }
}

const QXPlatform::UILabel& altTextLabel(const CarouselImageView& image) {
  const auto isLabel = [](const QObject* child) {
    return dynamic_cast<const QXPlatform::UILabel*>(child) != nullptr;
  };
  return dynamic_cast<const QXPlatform::UILabel&>(**std::ranges::find_if(image.children(), isLabel));
}

TEST(CarouselLooks, BacksATextThatIsHardToRead) {
  const auto isBacked = [](const char* textColor, const char* background) {
    Expanded expanded;
    expanded.deliverItems(brokenPanel("W", textColor, background));
    const QImage drawn = expanded.drawn();
    const QXPlatform::UILabel& label = altTextLabel(expanded.image(0));
    // Beside the letter, within what is put behind it.
    const QPoint beside = label.mapTo(&expanded.host->view(), label.textRect().center() - QPoint(14, 0));
    return drawn.pixelColor(beside * 2) != QColor(QString("#") + background);
  };
  EXPECT_FALSE(isBacked("000000", "E5E5E5"));
  EXPECT_FALSE(isBacked("FFFFFF", "202020"));
  EXPECT_TRUE(isBacked("E74C3C", "E5E5E5"));
  EXPECT_TRUE(isBacked("909090", "8E8E93"));
  EXPECT_NEAR(QXPlatform::contrastRatio(Qt::white, Qt::black), 21, 0.001);
}

TEST(CarouselLooks, TellsAPressedArrowFromADisabledOne) {
  Expanded expanded;
  expanded.deliver({{"u"}, {"u"}});
  const auto darkest = [](CarouselButton& button) {
    const QImage drawn = button.grab().toImage();
    int least = 255;
    for (int x = 0; x < drawn.width(); ++x)
      least = std::min(least, qGray(drawn.pixel(x, drawn.height() / 2)));
    return least;
  };
  auto& next = const_cast<CarouselButton&>(expanded.screen().nextButton());
  const QImage resting = next.grab().toImage();
  next.setDown(true);
  EXPECT_NE(next.grab().toImage(), resting);
  EXPECT_LT(darkest(next), 60);
  EXPECT_GT(darkest(const_cast<CarouselButton&>(expanded.screen().backButton())), 120);
}

TEST(CarouselLooks, ShowsAsManyPageDotsAsFit) {
  QXPlatform::UIPageControl control(nullptr);
  control.resize(120, 20);
  control.setNumberOfPages(30);
  for (const int page : {0, 10, 29}) {
    control.setCurrentPage(page);
    const QImage drawn = control.grab().toImage();
    const QRgb ground = drawn.pixel(0, 0);
    int dots = 0;
    for (int x = 1; x < drawn.width(); ++x) {
      const auto isDot = [&](int at) { return drawn.pixel(at, drawn.height() / 2) != ground; };
      if (isDot(x) && !isDot(x - 1)) ++dots;
    }
    EXPECT_EQ(dots, 8) << page;
  }
}

TEST(CarouselLooks, DrawsTheTextAsItIs) {
  QXPlatform::UILabel label(2, nullptr);
  label.setText(" One\r\ntwo\t\n three ");
  EXPECT_EQ(label.text(), "One two three");

  // Each sign by itself takes the room that it takes among the others: none is made into another.
  const QFont font = QXPlatform::systemFont(QXPlatform::SystemFontStyle::regular, 40);
  const auto drawn = [&font](const QString& text) {
    QXPlatform::UILabel sign(1, nullptr);
    sign.resize(300, 60);
    sign.setTextFont(font);
    sign.setText(text);
    return sign.textRect().width();
  };
  for (const char* text : {"->", "3x4", "<=>"}) {
    int apart = 0;
    for (const char* letter = text; *letter != '\0'; ++letter) apart += drawn(QString(QChar(*letter)));
    EXPECT_NEAR(drawn(text), apart, 5) << text;
  }
  EXPECT_TRUE(QXPlatform::hasGlyphsFor(
      "😀 中文 日本語 한국어 ภาษาไทย नमस्ते العربية ❤️"));
  EXPECT_FALSE(QXPlatform::hasGlyphsFor("\U000F1234"));
}

TEST(CarouselLooks, LeavesNothingUnderThePanelAfterARefusedRefresh) {
  Expanded alone;
  alone.deliver({{"u", "Alone"}});
  Expanded expanded;
  expanded.deliver({{"u", "One"}, {"u", "Two"}, {"u", "Three"}});
  for (int i = 0; i < 2; ++i) expanded.screen().nextButton().click();
  expanded.deliver({{"u", "Alone"}});
  EXPECT_EQ(expanded.host->contentSize(), alone.host->contentSize());

  // What has collapsed stays so until there is something to show.
  expanded.host->deliver(support::requestOf(R"({"_sid":"other"})"));
  ASSERT_TRUE(expanded.host->isCollapsed());
  expanded.deliver({{"u", "Alone"}});
  EXPECT_TRUE(expanded.host->isCollapsed());
  expanded.deliver({{"u"}, {"u"}, {"u"}});
  EXPECT_FALSE(expanded.host->isCollapsed());
}

}  // namespace
}  // namespace QXExtensionSDK
