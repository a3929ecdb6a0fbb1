#include "ShopWindow.h"

#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "SharedContainer.h"

namespace shop {

namespace {

constexpr int kMargin = 28;
constexpr int kWidth = 460;

QFont scaled(QFont font, qreal factor) {
  font.setPointSizeF(font.pointSizeF() * factor);
  return font;
}

QLabel* makeLabel(const QString& text, qreal scale, QPalette::ColorRole color) {
  auto* label = new QLabel(text);
  label->setFont(scaled(label->font(), scale));
  label->setForegroundRole(color);
  return label;
}

}  // namespace

ShopWindow::ShopWindow() : column_(new QVBoxLayout(this)) {
  setWindowTitle("Shop");
  QPalette colors = palette();
  colors.setBrush(QPalette::Window, colors.brush(QPalette::Base));
  setPalette(colors);
  column_->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  column_->addWidget(makeLabel("<b>Shop</b>", 2.4, QPalette::WindowText));
  endpoint_ = addRow("Push endpoint", "none yet");
  opened_ = addRow("Opened with", "nothing yet");
  click_ = addRow("Last tap in a carousel", "none yet");
  resize(kWidth, sizeHint().height());
}

void ShopWindow::showEndpoint(const QString& endpoint) {
  endpoint_->setText(endpoint.isEmpty() ? "none yet" : endpoint);
  endpoint_->setCursorPosition(0);
}

void ShopWindow::showOpened(const QString& action, const QString& subject) {
  if (!action.isEmpty()) opened_->setText(QString("%1 %2").arg(action, subject).trimmed());
  setWindowTitle(action.isEmpty() ? "Shop" : "Shop – " + opened_->text());
  const QString click = lastClick();
  if (!click.isEmpty()) click_->setText(click);
  click_->setCursorPosition(0);
  showNormal();
  raise();
  activateWindow();
}

// Values are longer than the window is wide, and are there to be copied.
QLineEdit* ShopWindow::addRow(const QString& name, const QString& value) {
  auto* text = new QLineEdit(value);
  text->setReadOnly(true);
  text->setFrame(false);
  text->setFont(scaled(text->font(), 1.1));
  column_->addSpacing(kMargin / 3);
  column_->addWidget(makeLabel(name, 0.9, QPalette::PlaceholderText));
  column_->addWidget(text);
  return text;
}

}  // namespace shop
