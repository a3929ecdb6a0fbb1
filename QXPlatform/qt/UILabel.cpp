#include "QXPlatform/ui/UILabel.h"

#include <QAccessible>
#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextOption>
#include <cmath>

#include "QXPlatform/ui/Accessibility.h"

namespace QXPlatform {

namespace {

// No label shows more than this; shaping a long text would take its time for nothing.
constexpr int kMostLetters = 1000;
constexpr QChar kEllipsis(0x2026);

// As seen on the screen: a text in the other direction than the view's keeps its own inside the lines.
Qt::Alignment visualAlignment(UILabel::Alignment alignment, Qt::LayoutDirection direction) {
  if (alignment == UILabel::Alignment::center) return Qt::AlignHCenter;
  const bool isLeft = (alignment == UILabel::Alignment::leading) == (direction == Qt::LeftToRight);
  return Qt::AlignAbsolute | (isLeft ? Qt::AlignLeft : Qt::AlignRight);
}

// Returns whether all of the text fits on so many lines.
bool breakLines(QTextLayout& layout, double width, int numberOfLines) {
  double y = 0;
  layout.beginLayout();
  QTextLine line = layout.createLine();
  for (int count = 0; line.isValid() && count < numberOfLines; ++count) {
    line.setLineWidth(width);
    line.setPosition({0, y});
    y += std::ceil(line.height());
    line = layout.createLine();
  }
  const bool fits = !line.isValid();
  if (!fits) line.setLineWidth(width);
  layout.endLayout();
  return fits;
}

int heightOf(const QTextLayout& layout, int numberOfLines) {
  double height = 0;
  for (int i = 0; i < std::min(layout.lineCount(), numberOfLines); ++i) {
    height += std::ceil(layout.lineAt(i).height());
  }
  return static_cast<int>(height);
}

QString shortened(const QString& text) {
  if (text.size() <= kMostLetters) return text;
  const bool isInsideLetter = text.at(kMostLetters).isLowSurrogate();
  return text.left(isInsideLetter ? kMostLetters - 1 : kMostLetters) + kEllipsis;
}

// White space of any kind and length, line breaks included, is one space.
QString prepared(const QString& text) {
  return shortened(text.simplified());
}

QTextOption optionsFor(Qt::Alignment alignment) {
  QTextOption options(alignment);
  options.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  options.setTextDirection(Qt::LayoutDirectionAuto);
  return options;
}

// The text, cut so that it ends on that line.
QString withElidedEnd(const QString& text, int lastLineStart, const QFont& font, double width) {
  const QString tail = text.mid(lastLineStart);
  // A hair less, so that rounding breaks no further line.
  return text.left(lastLineStart) + QFontMetricsF(font).elidedText(tail, Qt::ElideRight, width - 1);
}

std::unique_ptr<QTextLayout> makeLayout(const QString& text, const QFont& font, const QTextOption& options,
                                        double width, int numberOfLines) {
  auto layout = std::make_unique<QTextLayout>(text, font);
  layout->setTextOption(options);
  layout->setCacheEnabled(true);
  if (breakLines(*layout, width, numberOfLines)) return layout;
  layout->setText(withElidedEnd(text, layout->lineAt(numberOfLines - 1).textStart(), font, width));
  breakLines(*layout, width, numberOfLines);
  return layout;
}

}  // namespace

UILabel::UILabel(int numberOfLines, QWidget* parent) : QWidget(parent), numberOfLines_(numberOfLines) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setAccessibility(*this, {QAccessible::StaticText, {}});
}

UILabel::~UILabel() = default;

void UILabel::setText(const QString& text) {
  text_ = prepared(text);
  setAccessibleName(text);
  invalidate();
}

void UILabel::setNumberOfLines(int lines) {
  numberOfLines_ = lines;
  invalidate();
}

void UILabel::setTextFont(const QFont& font) {
  textFont_ = font;
  invalidate();
}

void UILabel::setTextColor(const QColor& color) {
  color_ = color;
  update();
}

void UILabel::setAlignment(Alignment alignment) {
  alignment_ = alignment;
  invalidate();
}

int UILabel::heightForText(const QString& text, const QFont& font, int width, int numberOfLines) {
  QTextLayout layout(prepared(text), font);
  layout.setTextOption(optionsFor(Qt::AlignLeft));
  breakLines(layout, width, numberOfLines);
  return heightOf(layout, numberOfLines);
}

int UILabel::heightForWidth(int width) const {
  return heightForText(text_, textFont_, width, numberOfLines_);
}

void UILabel::invalidate() {
  layout_.reset();
  update();
}

void UILabel::resizeEvent(QResizeEvent* /*event*/) {
  invalidate();
}

void UILabel::changeEvent(QEvent* event) {
  if (event->type() == QEvent::LayoutDirectionChange) invalidate();
  QWidget::changeEvent(event);
}

QTextLayout& UILabel::layout() const {
  if (layout_ == nullptr) {
    layout_ = makeLayout(text_, textFont_, optionsFor(visualAlignment(alignment_, layoutDirection())),
                         width(), numberOfLines_);
  }
  return *layout_;
}

QRect UILabel::textRect() const {
  QRectF area;
  for (int i = 0; i < std::min(layout().lineCount(), numberOfLines_); ++i) {
    area |= layout().lineAt(i).naturalTextRect();
  }
  return area.toAlignedRect();
}

void UILabel::paintEvent(QPaintEvent* /*event*/) {
  if (text_.isEmpty()) return;
  QPainter painter(this);
  painter.setPen(color_);
  for (int i = 0; i < std::min(layout().lineCount(), numberOfLines_); ++i) {
    layout().lineAt(i).draw(&painter, {0, 0});
  }
}

}  // namespace QXPlatform
