#include "QXPlatform/ui/UIViewController.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QWidget>
#include <algorithm>
#include <utility>

namespace QXPlatform {

namespace {

UIKey keyOf(const QKeyEvent& event) {
  switch (event.key()) {
    case Qt::Key_Left:
      return UIKey::left;
    case Qt::Key_Right:
      return UIKey::right;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return event.isAutoRepeat() ? UIKey::other : UIKey::returnOrEnter;
    default:
      return UIKey::other;
  }
}

bool isOpaque(const QWidget& view) {
  const bool isFilled = view.autoFillBackground() && view.palette().brush(view.backgroundRole()).isOpaque();
  return isFilled || view.testAttribute(Qt::WA_OpaquePaintEvent);
}

// What the views in it paint in full.
QRegion coveredRegion(const QWidget& view) {
  QRegion covered;
  for (const QObject* object : view.children()) {
    const auto* child = qobject_cast<const QWidget*>(object);
    if (child == nullptr || child->isHidden() || child->isWindow()) continue;
    const QRegion part = isOpaque(*child) ? child->rect() : coveredRegion(*child) & child->rect();
    covered += part.translated(child->pos());
  }
  return covered;
}

}  // namespace

// Passes on what happens to the view, and paints its surface where it is to be seen: the toolkit leaves out
// what other views cover on a screen, but not in a bitmap.
class UIViewController::View final : public QWidget {
 public:
  explicit View(UIViewController& controller) : controller_(controller) {
    setAttribute(Qt::WA_NoSystemBackground);
  }

 protected:
  void paintEvent(QPaintEvent* event) override {
    if (!isWindow() && !autoFillBackground()) return;
    QPainter painter(this);
    for (const QRect& part : event->region() - coveredRegion(*this)) {
      painter.fillRect(part, palette().brush(backgroundRole()));
    }
  }

  void resizeEvent(QResizeEvent* /*event*/) override { controller_.viewDidLayoutSubviews(); }

  void changeEvent(QEvent* event) override {
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::LayoutDirectionChange) {
      controller_.traitCollectionDidChange();
    }
    QWidget::changeEvent(event);
  }

  void keyPressEvent(QKeyEvent* event) override {
    if (!controller_.pressesBegan(keyOf(*event))) QWidget::keyPressEvent(event);
  }

 private:
  UIViewController& controller_;
};

UIViewController::UIViewController() = default;

UIViewController::~UIViewController() {
  // A widget deletes its children; the views in it are the children's own.
  while (!children_.empty()) children_.back()->removeFromParent();
}

QWidget& UIViewController::view() {
  if (view_ == nullptr) {
    view_ = std::make_unique<View>(*this);
    viewDidLoad();
  }
  return *view_;
}

void UIViewController::resizeView(int width, int height) {
  view().resize(width, height);
  // The toolkit tells a view that is not on a screen only before it is drawn.
  if (view().testAttribute(Qt::WA_PendingResizeEvent)) viewDidLayoutSubviews();
}

void UIViewController::setPreferredContentSize(Size size) {
  preferredContentSize_ = size;
  if (parent_ != nullptr) parent_->preferredContentSizeDidChangeForChildContentContainer(*this);
}

void UIViewController::addChild(std::shared_ptr<UIViewController> child) {
  child->parent_ = this;
  children_.push_back(std::move(child));
}

void UIViewController::removeFromParent() {
  if (parent_ == nullptr) return;
  if (view_ != nullptr) view_->setParent(nullptr);
  auto& siblings = std::exchange(parent_, nullptr)->children_;
  const auto self = std::ranges::find(siblings, this, [](const auto& child) { return child.get(); });
  const std::shared_ptr<UIViewController> keptUntilReturn = std::move(*self);
  siblings.erase(self);
}

NSExtensionContext* UIViewController::extensionContext() const {
  if (const auto context = extensionContext_.lock()) return context.get();
  return parent_ != nullptr ? parent_->extensionContext() : nullptr;
}

void UIViewController::setExtensionContext(std::weak_ptr<NSExtensionContext> context) {
  extensionContext_ = std::move(context);
}

}  // namespace QXPlatform
