#include "platform/ui/UIViewController.h"

#include <QWidget>
#include <algorithm>
#include <utility>

namespace platform {

UIViewController::UIViewController() = default;

UIViewController::~UIViewController() {
  // A widget deletes its children; the views in it are the children's own.
  while (!children_.empty()) children_.back()->removeFromParent();
}

QWidget& UIViewController::view() {
  if (view_ == nullptr) {
    view_ = loadView();
    viewDidLoad();
  }
  return *view_;
}

std::unique_ptr<QWidget> UIViewController::loadView() {
  return std::make_unique<QWidget>();
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

}  // namespace platform
