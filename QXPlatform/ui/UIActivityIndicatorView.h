#pragma once

#include <QBasicTimer>
#include <QColor>
#include <QWidget>

namespace QXPlatform {

// The spinning wheel that says work is going on; hidden while it stands still. Main thread.
class UIActivityIndicatorView final : public QWidget {
 public:
  explicit UIActivityIndicatorView(QWidget* parent);

  void startAnimating();
  void stopAnimating();
  bool isAnimating() const { return isAnimating_; }
  void setColor(const QColor& color);

  // Of the large style.
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void drawSpokes(QPainter& painter) const;

  QColor color_;
  QBasicTimer timer_;
  int step_ = 0;
  bool isAnimating_ = false;
};

}  // namespace QXPlatform
