#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "QXPlatform/notifications/UNNotificationContentExtension.h"
#include "QXPlatform/ui/NSExtensionContext.h"
#include "QXPlatform/ui/UIInspectable.h"
#include "QXPlatform/ui/UIViewController.h"

namespace QXPlatform {

// The operating system's side of a content extension: gives its view the width there is and the height it
// asks for, delivers notifications to it and carries out what it asks of the system. Main thread.
class ContentExtensionHost final : private UIViewController {
 public:
  // `Extension` is both a UIViewController and a UNNotificationContentExtension.
  template <typename Extension>
  ContentExtensionHost(std::shared_ptr<Extension> extension, int width)
      : ContentExtensionHost(extension, extension, width) {}
  ContentExtensionHost(std::shared_ptr<UIViewController> controller,
                       std::shared_ptr<UNNotificationContentExtension> extension, int width);
  ~ContentExtensionHost() override;

  // Puts the notification into the notification centre and shows it.
  void deliver(std::shared_ptr<const UNNotificationRequest> request);
  // What the extension answers when the notification itself is tapped. REQUIRES: after deliver()
  UNNotificationContentExtensionResponseOption respond();

  using UIViewController::view;
  // What the view takes: the width there is, and the height the extension asked for.
  Size contentSize() const;
  // A view of one point or less is not seen.
  bool isCollapsed() const;
  bool isDefaultActionPerformed() const;
  // What the extension itself asked for last.
  Size preferredContentSize() const { return controller_->preferredContentSize(); }
  // What the extension lets a simulator see and do; null when that is nothing.
  UIInspectable* inspectable() const;
  // Called when the extension performs the default action, which ends the expanded notification.
  void setDefaultActionHandler(std::function<void()> handler);

 private:
  class Context;

  void preferredContentSizeDidChangeForChildContentContainer(UIViewController& child) override;

  const std::shared_ptr<UIViewController> controller_;
  const std::shared_ptr<UNNotificationContentExtension> extension_;
  const std::shared_ptr<Context> context_;
  const int width_;
  UNNotification notification_;
};

// "doNotDismiss", "dismiss" or "dismissAndForwardAction".
std::string_view responseOptionName(UNNotificationContentExtensionResponseOption option);

}  // namespace QXPlatform
