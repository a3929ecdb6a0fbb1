#include "QXExtensionSDK/content/DefaultCoordinatorFactory.h"

#include <utility>

#include "QXExtensionSDK/content/CarouselCoordinator.h"
#include "QXExtensionSDK/payload/ViewTemplateCheck.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

std::shared_ptr<Coordinator> DefaultCoordinatorFactory::createCoordinatorUsing(
    const QXPlatform::UNNotificationRequest& request) const {
  const Logger& logger = Logger::content();
  if (checkViewTemplate(request, logger) != ViewTemplateType::carousel) {
    logger.error(LogCategory::contentGeneral, "Invalid View Template Type");
    return nullptr;
  }
  logger.debug(LogCategory::contentGeneral, "ViewTemplate type is carousel");
  return std::make_shared<CarouselCoordinator>(
      logger,
      CarouselCollaborators{
          .parser = std::make_unique<PayloadCarouselModelParser>(logger),
          .presenter = std::make_unique<CarouselPresenter>(logger),
          .clickStorageFactory = std::make_unique<CarouselClickStorageFactory>(logger),
          .makeScreen = makeScreen_,
          .dispatchMain = dispatchMain_,
          .dispatchSaving = [](std::function<void()> work) { clickSavingQueue().async(std::move(work)); },
      });
}

}  // namespace QXExtensionSDK
