#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QTextLayout>
#include <QWidget>
#include <memory>

namespace QXPlatform {

// Shows a text on at most so many lines; a longer one ends in "…". Leading and trailing follow the view's
// layout direction. Main thread.
class UILabel final : public QWidget {
 public:
  enum class Alignment { leading, center, trailing };

  UILabel(int numberOfLines, QWidget* parent);
  ~UILabel() override;

  // Also the accessible name.
  void setText(const QString& text);
  // At least 1.
  void setNumberOfLines(int lines);
  void setTextFont(const QFont& font);
  void setTextColor(const QColor& color);
  void setAlignment(Alignment alignment);
  const QString& text() const { return text_; }
  const QColor& textColor() const { return color_; }
  const QFont& textFont() const { return textFont_; }
  int heightForWidth(int width) const override;
  // What the lines take up of the view.
  QRect textRect() const;

  // What the text takes at that width, in points.
  static int heightForText(const QString& text, const QFont& font, int width, int numberOfLines);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  QTextLayout& layout() const;
  void invalidate();

  int numberOfLines_;
  QString text_;
  QFont textFont_;
  QColor color_;
  Alignment alignment_ = Alignment::leading;
  mutable std::unique_ptr<QTextLayout> layout_;  // null when it must be made anew
};

}  // namespace QXPlatform
