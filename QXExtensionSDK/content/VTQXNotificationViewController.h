#pragma once

#include <memory>

#include "QXExtensionSDK/content/Coordinator.h"
#include "QXExtensionSDK/content/VTContentExtensionConfig.h"
#include "QXPlatform/notifications/UNNotificationContentExtension.h"
#include "QXPlatform/ui/UIInspectable.h"
#include "QXPlatform/ui/UIViewController.h"

namespace QXExtensionSDK {

// The host's content extension: draws an expanded notification of this system, and takes no room for any
// other. A host may subclass it to supply its configuration. Main thread.
class VTQXNotificationViewController : public QXPlatform::UIViewController,
                                       public QXPlatform::UNNotificationContentExtension,
                                       public QXPlatform::UIInspectable {
 public:
  void didReceiveNotification(const QXPlatform::UNNotification& notification) override;
  void didReceiveNotificationResponse(const QXPlatform::UNNotificationResponse& response,
                                      const ResponseCompletion& completionHandler) override;
  void handleNotificationReceived(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request);

  // Takes all the room that there is.
  void viewDidLoad() override;
  // Takes no room, and stops what stands in it.
  void handleViewShouldNotDisplay();
  // Sets the logger's level to the configuration's.
  void setLogLevel();

  // To be overridden by the host; asked once for each notification. Without a configuration the level stays.
  virtual std::optional<VTContentExtensionConfig> vtqxProvideConfig();

  const std::shared_ptr<Coordinator>& coordinator() const { return coordinator_; }
  void setCoordinator(std::shared_ptr<Coordinator> coordinator) { coordinator_ = std::move(coordinator); }
  const std::shared_ptr<QXPlatform::UIViewController>& coordinatorVC() const { return coordinatorVC_; }
  void setCoordinatorVC(std::shared_ptr<QXPlatform::UIViewController> controller) {
    coordinatorVC_ = std::move(controller);
  }

 protected:
  void viewDidLayoutSubviews() override;
  void preferredContentSizeDidChangeForChildContentContainer(QXPlatform::UIViewController& child) override;

 private:
  QXPlatform::Dictionary inspect(bool isShown) const override;
  void take(std::string_view step) override;
  bool isLoading() const override;
  void setStepHandler(StepHandler handler) override;

  void start(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request);
  void embed(std::shared_ptr<QXPlatform::UIViewController> controller);

  std::shared_ptr<Coordinator> coordinator_;
  std::shared_ptr<QXPlatform::UIViewController> coordinatorVC_;
  StepHandler stepHandler_;
};

}  // namespace QXExtensionSDK
