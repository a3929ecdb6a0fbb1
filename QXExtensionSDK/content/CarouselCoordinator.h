#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QXExtensionSDK/content/CarouselClickStoring.h"
#include "QXExtensionSDK/content/CarouselPresenter.h"
#include "QXExtensionSDK/content/CarouselScreen.h"
#include "QXExtensionSDK/content/Coordinator.h"
#include "QXExtensionSDK/content/MainDispatch.h"
#include "QXExtensionSDK/payload/CarouselModel.h"
#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

// What a carousel coordinator works with. None is null.
struct CarouselCollaborators {
  std::unique_ptr<const PayloadCarouselModelParsing> parser;
  std::unique_ptr<CarouselPresenting> presenter;
  std::shared_ptr<CarouselClickStorageCreating> clickStorageFactory;
  CarouselScreenFactory makeScreen;
  MainDispatch dispatchMain;
  // Runs work elsewhere than on the main thread, one piece after the other: saving a click may have to wait
  // for the container.
  BackgroundDispatch dispatchSaving;
};

// Runs the carousel: decodes the notification, moves between the panels, records a tap and hands it on to the
// host application. A notification that cannot be shown collapses the screen. The selected panel survives a
// refresh. Held by std::shared_ptr; main thread.
class CarouselCoordinator final : public Coordinator,
                                  public CarouselViewControllerDelegate,
                                  public std::enable_shared_from_this<CarouselCoordinator> {
 public:
  // `logger` must outlive the coordinator.
  CarouselCoordinator(const Logger& logger, CarouselCollaborators collaborators);

  // REQUIRES for refreshWith(): after startWith().
  void startWith(std::shared_ptr<const QXPlatform::UNNotificationRequest> request) override;
  void refreshWith(std::shared_ptr<const QXPlatform::UNNotificationRequest> request) override;
  std::shared_ptr<QXPlatform::UIViewController> primaryViewController() const override;
  QXPlatform::UNNotificationContentExtensionResponseOption responseOptionFor(
      const QXPlatform::UNNotificationResponse& response) const override;

  void backButtonTapped() override;
  void nextButtonTapped() override;
  // Saves the click for every module that the push is meant for, in the background; then asks for the
  // notification's default action and takes the notification out of the notification centre.
  void panelTapped() override;

 private:
  void load();
  void collapse(std::string_view reason) const;
  void move(std::int64_t step, NavigationButtonClickState button);

  const PanelItemComponent* selectedPanel() const;
  const PanelItem* selectedItem() const;
  std::optional<std::string> uniqueNotificationId() const;
  std::function<void()> savingOf(const std::string& uniqueId, const std::string& panelId,
                                 const UserAction& action) const;
  std::function<void()> defaultAction() const;

  const Logger& logger_;
  const CarouselCollaborators with_;
  std::shared_ptr<CarouselScreen> carouselVC_;
  std::int64_t currentSelectedPanelIndex_ = 0;
  std::shared_ptr<const QXPlatform::UNNotificationRequest> notificationRequest_;
  // Absent when the request could not be shown.
  std::optional<CarouselModel> model_;
};

}  // namespace QXExtensionSDK
