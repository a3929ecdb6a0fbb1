#include "QXExtensionSDK/content/VTQXNotificationViewController.h"

#include <QWidget>
#include <utility>

#include "QXExtensionSDK/content/CarouselInspection.h"
#include "QXExtensionSDK/content/CarouselViewController.h"
#include "QXExtensionSDK/content/DefaultCoordinatorFactory.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/ui/MainQueue.h"

namespace QXExtensionSDK {

namespace {

constexpr LogCategory kCategory = LogCategory::contentGeneral;

// Of the size that it is to have: what is measured for another one would be so twice.
std::shared_ptr<CarouselScreen> makeCarouselScreen(QSize size) {
  auto screen = std::make_shared<CarouselViewController>(Logger::content());
  screen->resizeView(size.width(), size.height());
  return screen;
}

// Null when there is none.
CarouselViewController* carousel(const std::shared_ptr<QXPlatform::UIViewController>& controller) {
  return dynamic_cast<CarouselViewController*>(controller.get());
}

}  // namespace

void VTQXNotificationViewController::viewDidLoad() {
  UIViewController::viewDidLoad();
  view().setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void VTQXNotificationViewController::didReceiveNotification(const QXPlatform::UNNotification& notification) {
  handleNotificationReceived(notification.request);
}

void VTQXNotificationViewController::handleNotificationReceived(
    const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request) {
  setLogLevel();
  if (!VTQXUtility::isVTQXPushNotification(*request)) {
    Logger::content().error(kCategory, "Non VTQX PN in content extension");
    return handleViewShouldNotDisplay();
  }
  if (coordinator_ == nullptr && coordinatorVC_ == nullptr) return start(request);
  if (coordinator_ != nullptr) coordinator_->refreshWith(request);
}

void VTQXNotificationViewController::start(
    const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request) {
  const DefaultCoordinatorFactory factory([size = view().size()] { return makeCarouselScreen(size); },
                                          QXPlatform::dispatchMainAsync);
  auto coordinator = factory.createCoordinatorUsing(*request);
  if (coordinator == nullptr) {
    Logger::content().error(kCategory, "Can't find a suitable Coordinator");
    return handleViewShouldNotDisplay();
  }
  coordinator_ = std::move(coordinator);
  coordinator_->startWith(request);
  auto controller = coordinator_->primaryViewController();
  if (controller == nullptr) {
    Logger::content().error(kCategory, "VTQXNotificationViewController coordinator VC is nil");
    return handleViewShouldNotDisplay();
  }
  embed(std::move(controller));
}

void VTQXNotificationViewController::embed(std::shared_ptr<QXPlatform::UIViewController> controller) {
  addChild(controller);
  QWidget& childView = controller->view();
  childView.setParent(&view());
  controller->resizeView(view().width(), view().height());
  childView.show();
  coordinatorVC_ = std::move(controller);
  if (auto* screen = carousel(coordinatorVC_)) screen->setStepHandler(stepHandler_);
  setPreferredContentSize(coordinatorVC_->preferredContentSize());
}

void VTQXNotificationViewController::viewDidLayoutSubviews() {
  if (coordinatorVC_ != nullptr) coordinatorVC_->resizeView(view().width(), view().height());
}

void VTQXNotificationViewController::preferredContentSizeDidChangeForChildContentContainer(
    QXPlatform::UIViewController& child) {
  UIViewController::preferredContentSizeDidChangeForChildContentContainer(child);
  if (coordinatorVC_ != nullptr) setPreferredContentSize(coordinatorVC_->preferredContentSize());
}

void VTQXNotificationViewController::didReceiveNotificationResponse(
    const QXPlatform::UNNotificationResponse& response, const ResponseCompletion& completionHandler) {
  const auto option = coordinator_ != nullptr
                          ? coordinator_->responseOptionFor(response)
                          : QXPlatform::UNNotificationContentExtensionResponseOption::doNotDismiss;
  Logger::content().debug(kCategory, "VTQXNotificationViewController notification response option is=",
                          static_cast<unsigned long>(option));
  completionHandler(option);
}

void VTQXNotificationViewController::handleViewShouldNotDisplay() {
  constexpr double kCollapsedHeight = 1;
  // What is no longer seen must neither go on by itself nor be tapped.
  if (auto* screen = dynamic_cast<CarouselScreen*>(coordinatorVC_.get())) screen->collapse();
  setPreferredContentSize({static_cast<double>(view().width()), kCollapsedHeight});
}

std::optional<VTContentExtensionConfig> VTQXNotificationViewController::vtqxProvideConfig() {
  Logger::content().debug(kCategory, "VTQXNotificationViewController vtqxProvideConfig start");
  return VTContentExtensionConfig::defaultConfig();
}

void VTQXNotificationViewController::setLogLevel() {
  if (const auto config = vtqxProvideConfig()) {
    Logger::setGlobalLoglevel(static_cast<std::int64_t>(config->logLevel()));
  }
}

QXPlatform::Dictionary VTQXNotificationViewController::inspect(bool isShown) const {
  return inspectCarousel(carousel(coordinatorVC_), isShown);
}

void VTQXNotificationViewController::take(std::string_view step) {
  takeCarouselStep(carousel(coordinatorVC_), step);
}

bool VTQXNotificationViewController::isLoading() const {
  const auto* screen = carousel(coordinatorVC_);
  return screen != nullptr && screen->isAnyImageDownloading();
}

void VTQXNotificationViewController::setStepHandler(StepHandler handler) {
  stepHandler_ = std::move(handler);
  if (auto* screen = carousel(coordinatorVC_)) screen->setStepHandler(stepHandler_);
}

}  // namespace QXExtensionSDK
