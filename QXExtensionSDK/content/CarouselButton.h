#pragma once

#include <QAbstractButton>
#include <QRectF>
#include <QString>

namespace QXExtensionSDK {

// An arrow button that answers to touches up to 16 points outside of what it shows. While it is disabled it
// swallows them, so that a tap that just misses it does not open the panel behind. Main thread.
class CarouselButton final : public QAbstractButton {
 public:
  static constexpr int kTouchMargin = 16;

  // Names of images in the framework's bundle.
  CarouselButton(const char* enabledImage, const char* disabledImage, QWidget* parent);

  // Where the button is drawn, in its parent; the widget itself is as large as the touch area.
  void setBounds(const QRect& bounds);
  // Relative to the top left corner of what is drawn.
  bool pointInside(const QPoint& point) const;

 protected:
  bool event(QEvent* event) override;
  bool hitButton(const QPoint& position) const override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QRect bounds() const;

  const QString enabledImage_;
  const QString disabledImage_;
  bool showsFocus_ = false;  // whenever it has the focus
};

}  // namespace QXExtensionSDK
