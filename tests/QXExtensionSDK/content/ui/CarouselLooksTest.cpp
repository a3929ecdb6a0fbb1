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

  // In a small place it is cut as the image is.
  Expanded narrow(112);
  narrow.deliverItems(brokenPanel("WWWWWWWWWW", "E74C3C", "E5E5E5"));
  const QRect place = narrow.image(0).rect();
  const QPoint corner = narrow.image(0).mapTo(&narrow.host->view(), place.bottomLeft() + QPoint(1, -1));
  EXPECT_EQ(narrow.colorAt(corner), QColor(Qt::white));
}

QImage reduced(const QImage& image, int factor) {
  return image
      .scaled(image.width() / factor, image.height() / factor, Qt::IgnoreAspectRatio,
              Qt::SmoothTransformation)
      .convertToFormat(QImage::Format_RGB32);
}

// Whether the view looks as on the picture that the tests keep, looked at from so far away that it does not
// matter how a font's outlines meet the pixels. What looks otherwise is left in the temporary directory, for
// somebody to look at and, if it is right, to keep.
void expectDrawing(const Expanded& expanded, const std::string& name) {
  constexpr int kPixelsAPoint = 2;
  constexpr int kDistance = 4;
  constexpr int kMostDifference = 48;
  const QImage drawn = reduced(expanded.drawn(), kPixelsAPoint);
  const QImage kept(QString::fromStdString(QX_DRAWINGS "/" + name));
  int difference = drawn.size() == kept.size() ? 0 : 255;
  if (difference == 0) {
    const QImage one = reduced(drawn, kDistance);
    const QImage other = reduced(kept, kDistance);
    for (qsizetype i = 0; i < one.sizeInBytes(); ++i) {
      difference = std::max(difference, std::abs(one.constBits()[i] - other.constBits()[i]));
    }
  }
  const std::string place = testing::TempDir() + name;
  if (difference > kMostDifference) drawn.save(QString::fromStdString(place));
  EXPECT_LE(difference, kMostDifference) << place;
}

TEST(CarouselLooks, LooksAsOnThePictures) {
  ImageServer server;
  std::promise<void> release;
  const std::string slow = server.serve("/slow", {.body = ""}, release.get_future());
  {
    Expanded loading(240);
    loading.deliverItems(R"([{"id":"p","md":{"ul":")" + slow + R"(","s":{"bgc":"8E8E93"}}}])");
    expectDrawing(loading, "loading.png");
  }
  release.set_value();

  Expanded scripts(240);
  scripts.deliver({{"u", "😀❤️ 中文 日本語 한국어", "ภาษาไทย नमस्ते -> 3x4", "Alt"}});
  expectDrawing(scripts, "scripts.png");

  for (const int width : {112, 240}) {
    Expanded broken(width);
    broken.deliverItems(brokenPanel(
        "What the picture would have shown, told at length, if only it had been there", "E74C3C", "E5E5E5"));
    expectDrawing(broken, "broken-" + std::to_string(width) + ".png");
  }

  Expanded arrows(240);
  arrows.deliver(std::vector<support::PanelText>(30, {"u"}));
  for (int i = 0; i < 14; ++i) arrows.screen().nextButton().click();
  arrows.screen().nextButton().setDown(true);
  expectDrawing(arrows, "pressed-arrow.png");
  while (arrows.screen().nextButton().isEnabled()) arrows.screen().nextButton().click();
  expectDrawing(arrows, "disabled-arrow.png");
}

// What a tolerance for fonts would let pass.
TEST(CarouselLooks, ShowsWhatIsPressedAndThatMoreDotsFollow) {
  Expanded expanded(240);
  expanded.deliver({{"u"}, {"u"}});
  CarouselButton& arrow = expanded.screen().nextButton();
  // At the edge of the disc, where the arrow is not.
  const auto lightnessOfDisc = [&arrow, &expanded] {
    const QPoint edge = arrow.mapTo(&expanded.host->view(), arrow.rect().center() - QPoint(0, 12));
    return expanded.drawn().pixelColor(edge * 2).lightness();
  };
  const int atRest = lightnessOfDisc();
  arrow.setDown(true);
  EXPECT_GE(std::abs(atRest - lightnessOfDisc()), 20);

  QXPlatform::UIPageControl dots(nullptr);
  dots.resize(100, 20);
  dots.setNumberOfPages(20);
  dots.setCurrentPage(10);
  QImage drawn(400, 80, QImage::Format_ARGB32_Premultiplied);
  drawn.setDevicePixelRatio(4);
  drawn.fill(Qt::transparent);
  dots.render(&drawn, {}, {}, QWidget::DrawChildren);
  std::vector<int> widths;
  for (int x = 1, start = 0; x < drawn.width(); ++x) {
    const bool isDot = drawn.pixelColor(x, 40).alpha() > 20;
    if (isDot && drawn.pixelColor(x - 1, 40).alpha() <= 20) start = x;
    if (!isDot && drawn.pixelColor(x - 1, 40).alpha() > 20) widths.push_back(x - start);
  }
  ASSERT_EQ(widths.size(), 6U);
  for (const auto& [outer, inner] : {std::pair{0, 1}, {1, 2}, {4, 3}, {5, 4}}) {
    EXPECT_LT(widths[static_cast<std::size_t>(outer)], widths[static_cast<std::size_t>(inner)]) << outer;
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
