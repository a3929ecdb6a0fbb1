#include "QXPlatform/ui/UILabel.h"

#include <QImage>

#include "QXPlatform/ui/Appearance.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

constexpr int kWidth = 200;
constexpr int kLines = 2;

QFont font() {
  return systemFont(SystemFontStyle::bold, 14);
}

QImage drawn(const QString& text) {
  UILabel label(kLines, nullptr);
  label.setText(text);
  label.setTextFont(font());
  label.setTextColor(Qt::black);
  label.resize(kWidth, 60);
  return label.grab().toImage();
}

// How many letters of the text are drawn, with "…" behind them; 0 when it is not drawn that way.
qsizetype lettersDrawn(const QString& text) {
  const QImage whole = drawn(text);
  const int height = UILabel::heightForText(text, font(), kWidth, kLines);
  for (qsizetype count = text.size() - 1; count > 0; --count) {
    const QString cut = text.left(count) + QChar(0x2026);
    const bool fits = UILabel::heightForText(cut, font(), kWidth, kLines + 1) <= height;
    if (fits && drawn(cut) == whole) return count;
  }
  return 0;
}

TEST(UILabel, EndsALongTextInAnEllipsisOnItsLastLine) {
  const std::vector<QString> texts{QString("A title of many words ").repeated(9), QString(200, 'W'),
                                   QString::fromUtf8("שלום לכל העולם ").repeated(12),
                                   QString::fromUtf8("新しい季節の特集").repeated(9)};
  for (const QString& text : texts) {
    const QString longer = text.left(lettersDrawn(text) + 3);
    EXPECT_GT(longer.size(), 3) << text.toStdString();
    EXPECT_GT(UILabel::heightForText(longer, font(), kWidth, kLines + 1),
              UILabel::heightForText(text, font(), kWidth, kLines))
        << "cut too early: " << text.toStdString();
  }
  EXPECT_EQ(lettersDrawn("Short enough"), 0);
  EXPECT_EQ(drawn("One\nTwo\nThree"), drawn("One\nTwo Three"));
}

}  // namespace
}  // namespace QXPlatform
