#include "QXExtensionSDK/content/CarouselCoordinator.h"

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "AppGroupSDK/context/PNContextUtils.h"
#include "AppGroupSDK/records/CarouselRichFeatureMetaUtils.h"
#include "QXExtensionSDK/content/CarouselClick.h"
#include "QXPlatform/notifications/UNUserNotificationCenter.h"
#include "QXPlatform/ui/NSExtensionContext.h"

namespace QXExtensionSDK {

namespace {

using AppGroupSDK::ExtensionModuleName;

constexpr LogCategory kCategory = LogCategory::contentGeneral;

void removeDeliveredNotification(const QXPlatform::UNNotificationRequest& request, const Logger& logger) {
  if (request.identifier.empty()) {
    logger.error(kCategory, "Delivered notification can't be removed");
    return;
  }
  QXPlatform::UNUserNotificationCenter::current().removeDeliveredNotificationsWithIdentifiers(
      {request.identifier});
}

constexpr std::string_view shortName(ExtensionModuleName module) {
  return module == ExtensionModuleName::quorixEngagement ? "QXE" : "MAM";
}

}  // namespace

CarouselCoordinator::CarouselCoordinator(const Logger& logger, CarouselCollaborators collaborators)
    : logger_(logger), with_(std::move(collaborators)) {}

void CarouselCoordinator::startWith(std::shared_ptr<const QXPlatform::UNNotificationRequest> request) {
  carouselVC_ = with_.makeScreen();
  carouselVC_->setDelegate(weak_from_this());
  refreshWith(std::move(request));
}

void CarouselCoordinator::refreshWith(std::shared_ptr<const QXPlatform::UNNotificationRequest> request) {
  notificationRequest_ = std::move(request);
  load();
}

std::shared_ptr<QXPlatform::UIViewController> CarouselCoordinator::primaryViewController() const {
  if (carouselVC_ == nullptr) return nullptr;
  return {carouselVC_, &carouselVC_->viewController()};
}

QXPlatform::UNNotificationContentExtensionResponseOption CarouselCoordinator::responseOptionFor(
    const QXPlatform::UNNotificationResponse& /*response*/) const {
  logger_.debug(kCategory,
                "CarouselCoordinator default UNNotificationContentExtensionResponseOption is "
                "dismissAndForwardAction");
  return QXPlatform::UNNotificationContentExtensionResponseOption::dismissAndForwardAction;
}

void CarouselCoordinator::load() {
  // What was shown before is no longer what a tap is about.
  model_.reset();
  if (notificationRequest_ == nullptr) {
    return collapse("Not proceeding with parsing as notification request object is nil");
  }
  model_ = with_.parser->parse(*notificationRequest_);
  if (!model_) return collapse("Parsing returned a nil model object");
  with_.presenter->setCurrentSelectedPanelIndex(currentSelectedPanelIndex_);
  carouselVC_->apply(with_.presenter->viewModel(*model_));
}

void CarouselCoordinator::collapse(std::string_view reason) const {
  logger_.error(kCategory, reason);
  carouselVC_->collapse();
}

void CarouselCoordinator::backButtonTapped() {
  move(-1, NavigationButtonClickState::back);
}

void CarouselCoordinator::nextButtonTapped() {
  move(1, NavigationButtonClickState::next);
}

void CarouselCoordinator::move(std::int64_t step, NavigationButtonClickState button) {
  if (!model_) return collapse("Backing out as model is nil");
  const std::size_t panelCount = model_->viewTemplate.items.size();
  const std::int64_t index = currentSelectedPanelIndex_ + step;
  // After a refresh with fewer panels the index may lie beyond them; it may still come back.
  if (index < 0 || (step > 0 && index >= static_cast<std::int64_t>(panelCount))) return;

  currentSelectedPanelIndex_ = index;
  CarouselViewModel viewModel = carouselVC_->viewModel();
  viewModel.currentPanelIndex = index;
  viewModel.navigationState = makeNavigationState(panelCount, index, button);
  carouselVC_->apply(viewModel);
}

void CarouselCoordinator::panelTapped() {
  const PanelItemComponent* panel = selectedPanel();
  if (panel == nullptr) return logger_.error(kCategory, "Invalid View Model panel data");
  const PanelItem* item = selectedItem();
  if (item == nullptr) return logger_.error(kCategory, "Invalid Model items data");
  const auto uniqueId = uniqueNotificationId();
  if (!uniqueId) {
    return logger_.error(kCategory,
                         "Backing out from saving carousel click data in App Group as unique id is nil");
  }
  auto saving = panel->action ? savingOf(*uniqueId, item->identifier, *panel->action) : nullptr;
  // The application reads the click as soon as it is opened.
  with_.dispatchSaving(
      [saving = std::move(saving), dispatchMain = with_.dispatchMain, open = defaultAction()] {
        if (saving) saving();
        dispatchMain(open);
      });
}

const PanelItemComponent* CarouselCoordinator::selectedPanel() const {
  if (carouselVC_ == nullptr || carouselVC_->viewModel().panels == nullptr) return nullptr;
  const PanelItemComponents& panels = *carouselVC_->viewModel().panels;
  const auto index = static_cast<std::size_t>(currentSelectedPanelIndex_);
  return index < panels.size() ? &panels[index] : nullptr;
}

const PanelItem* CarouselCoordinator::selectedItem() const {
  if (!model_) return nullptr;
  const std::vector<PanelItem>& items = model_->viewTemplate.items;
  const auto index = static_cast<std::size_t>(currentSelectedPanelIndex_);
  return index < items.size() ? &items[index] : nullptr;
}

std::optional<std::string> CarouselCoordinator::uniqueNotificationId() const {
  return AppGroupSDK::CarouselRichFeatureMetaUtils::getUniqueNotificationIdFrom(
      notificationRequest_->content->userInfo());
}

// Empty when the action is not what it declares.
std::function<void()> CarouselCoordinator::savingOf(const std::string& uniqueId, const std::string& panelId,
                                                    const UserAction& action) const {
  auto click = makeCarouselClick(uniqueId, currentSelectedPanelIndex_, panelId, action, logger_);
  if (!click) return {};
  return [click = std::move(*click), request = notificationRequest_, factory = with_.clickStorageFactory,
          &logger = logger_] {
    const auto context = AppGroupSDK::PNContextUtils::parseContextInfoFromContent(*request->content);
    for (const ExtensionModuleName module : rawValues(QXPlatform::RawValuesOf<ExtensionModuleName>())) {
      const auto storage = factory->createStorage(module, context);
      if (storage == nullptr) continue;
      const bool saved = storage->save(click);
      logger.debug(kCategory, "Click state save status=", saved, " for ", shortName(module), " module");
    }
  };
}

std::function<void()> CarouselCoordinator::defaultAction() const {
  // The screen may be closed before this runs; there is nobody left to ask then.
  return [screen = std::weak_ptr(carouselVC_), request = notificationRequest_, &logger = logger_] {
    const auto carouselVC = screen.lock();
    auto* extensionContext = carouselVC != nullptr ? carouselVC->extensionContext() : nullptr;
    if (extensionContext == nullptr) return logger.error(kCategory, "Extension context not found");
    extensionContext->performNotificationDefaultAction();
    removeDeliveredNotification(*request, logger);
  };
}

}  // namespace QXExtensionSDK
