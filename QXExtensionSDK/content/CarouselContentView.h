#pragma once

#include <QPoint>
#include <QVariantAnimation>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "QXExtensionSDK/content/CarouselPanelView.h"

namespace QXExtensionSDK {

enum class PanelChange { none, forward, backward };

// Where the current panel stands: takes the tap and the keyboard's focus for it, and lets the next one slide
// in. Main thread.
class CarouselContentView final : public QWidget {
 public:
  static constexpr int kMargin = 8;

  CarouselContentView(std::function<void()> tapped, QWidget* parent);
  ~CarouselContentView() override;

  void setFrame(const QRect& frame);
  // Where the panel stands.
  QRect panelFrame() const;

  // Puts the panel in place of the one before; on a visible screen it slides in from where it comes. The
  // panel stands at its place at once for anyone who asks or draws it without a screen.
  void showPanel(std::shared_ptr<CarouselPanelView> panel, PanelChange change);
  // Null before the first.
  const std::shared_ptr<CarouselPanelView>& currentPanelView() const { return panel_; }
  bool isSliding() const { return slide_.state() == QAbstractAnimation::Running; }

 protected:
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void startSlide(PanelChange change);
  void setOpaque();
  void paintBackground(QPainter& painter) const;
  void moveSlide(double progress);
  void endSlide();

  const std::function<void()> tapped_;
  std::shared_ptr<CarouselPanelView> panel_;
  std::shared_ptr<CarouselPanelView> leaving_;  // while sliding
  int slideDistance_ = 0;
  std::optional<QPoint> pressed_;
  bool showsFocus_ = false;  // whenever it has the focus
  QVariantAnimation slide_;
};

}  // namespace QXExtensionSDK
