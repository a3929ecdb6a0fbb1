#include "QXPlatform/ui/ContentExtensionHost.h"

#include <QWidget>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/notifications/UNUserNotificationCenter.h"

namespace QXPlatform {

class ContentExtensionHost::Context final : public NSExtensionContext {
 public:
  void performNotificationDefaultAction() override {
    isDefaultActionPerformed = true;
    if (handler) handler();
  }

  bool isDefaultActionPerformed = false;
  std::function<void()> handler;
};

ContentExtensionHost::ContentExtensionHost(std::shared_ptr<UIViewController> controller,
                                           std::shared_ptr<UNNotificationContentExtension> extension,
                                           int width)
    : controller_(std::move(controller)),
      extension_(std::move(extension)),
      context_(std::make_shared<Context>()),
      width_(width) {
  setExtensionContext(context_);
  addChild(controller_);
  view().setFixedSize(width_, width_);
  view().setAutoFillBackground(true);
  controller_->view().setParent(&view());
  controller_->resizeView(width_, width_);
}

ContentExtensionHost::~ContentExtensionHost() = default;

void ContentExtensionHost::deliver(std::shared_ptr<const UNNotificationRequest> request) {
  UNUserNotificationCenter::current().addDeliveredNotification(request);
  context_->isDefaultActionPerformed = false;
  notification_ = {Date::now(), std::move(request)};
  extension_->didReceiveNotification(notification_);
}

UNNotificationContentExtensionResponseOption ContentExtensionHost::respond() {
  auto answer = UNNotificationContentExtensionResponseOption::doNotDismiss;
  extension_->didReceiveNotificationResponse(
      {notification_, UNNotificationResponse::kDefaultActionIdentifier},
      [&answer](UNNotificationContentExtensionResponseOption option) { answer = option; });
  return answer;
}

void ContentExtensionHost::preferredContentSizeDidChangeForChildContentContainer(UIViewController& child) {
  const int height = std::max(1, static_cast<int>(std::lround(child.preferredContentSize().height)));
  view().setFixedSize(width_, height);
  child.resizeView(width_, height);
}

Size ContentExtensionHost::contentSize() const {
  return {static_cast<double>(width_), controller_->preferredContentSize().height};
}

bool ContentExtensionHost::isCollapsed() const {
  return contentSize().height <= 1;
}

bool ContentExtensionHost::isDefaultActionPerformed() const {
  return context_->isDefaultActionPerformed;
}

UIInspectable* ContentExtensionHost::inspectable() const {
  return dynamic_cast<UIInspectable*>(controller_.get());
}

void ContentExtensionHost::setDefaultActionHandler(std::function<void()> handler) {
  context_->handler = std::move(handler);
}

std::string_view responseOptionName(UNNotificationContentExtensionResponseOption option) {
  using enum UNNotificationContentExtensionResponseOption;
  constexpr auto kNames = std::to_array<RawCase<UNNotificationContentExtensionResponseOption>>(
      {{doNotDismiss, "doNotDismiss"},
       {dismiss, "dismiss"},
       {dismissAndForwardAction, "dismissAndForwardAction"}});
  return nameIn(kNames, option);
}

}  // namespace QXPlatform
