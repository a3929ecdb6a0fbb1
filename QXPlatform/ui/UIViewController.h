#pragma once

#include <memory>
#include <vector>

#include "QXPlatform/ui/NSExtensionContext.h"
#include "QXPlatform/ui/Size.h"

class QWidget;

namespace QXPlatform {

enum class UIKey { left, right, returnOrEnter, other };

// Owns one view and takes part in a tree of such controllers. Main thread.
//
// A child is shared between its parent and whoever made it; its view belongs to the controller, also while it
// stands inside the parent's view.
class UIViewController {
 public:
  UIViewController();
  virtual ~UIViewController();
  UIViewController(const UIViewController&) = delete;
  UIViewController& operator=(const UIViewController&) = delete;

  // Made on first use, which also calls viewDidLoad(). Lives as long as the controller.
  QWidget& view();
  bool isViewLoaded() const { return view_ != nullptr; }
  // Gives the view that size and lays it out at once, on a screen or not.
  void resizeView(int width, int height);

  Size preferredContentSize() const { return preferredContentSize_; }
  // Tells the parent.
  void setPreferredContentSize(Size size);

  // Joins the tree; the child's view is added by whoever adds the child. REQUIRES: the child has no parent.
  void addChild(std::shared_ptr<UIViewController> child);
  // Leaves the tree; the view leaves the parent's view.
  void removeFromParent();
  UIViewController* parent() const { return parent_; }

  // The system's, set on the root of the tree; the nearest ancestor's counts. Null outside an extension.
  NSExtensionContext* extensionContext() const;
  void setExtensionContext(std::weak_ptr<NSExtensionContext> context);

 protected:
  virtual void viewDidLoad() {}
  // The view has got another size.
  virtual void viewDidLayoutSubviews() {}
  // Light or dark appearance, or the direction of reading, may have changed.
  virtual void traitCollectionDidChange() {}
  // A key was pressed and no subview wanted it; returns whether it had an effect. An arrow key that is held
  // down is pressed again and again, any other once.
  virtual bool pressesBegan(UIKey /*key*/) { return false; }
  virtual void preferredContentSizeDidChangeForChildContentContainer(UIViewController& /*child*/) {}

 private:
  class View;

  std::unique_ptr<QWidget> view_;
  Size preferredContentSize_;
  UIViewController* parent_ = nullptr;
  std::vector<std::shared_ptr<UIViewController>> children_;
  std::weak_ptr<NSExtensionContext> extensionContext_;
};

}  // namespace QXPlatform
