#pragma once

#include <memory>
#include <utility>

#include "QXExtensionSDK/content/CarouselScreen.h"
#include "QXExtensionSDK/content/Coordinator.h"
#include "QXExtensionSDK/content/MainDispatch.h"

namespace QXExtensionSDK {

// Knows the one screen there is: the carousel.
class DefaultCoordinatorFactory final : public CoordinatorFactory {
 public:
  // `makeScreen` makes the carousel screens; `dispatchMain` defers work on the main thread.
  DefaultCoordinatorFactory(CarouselScreenFactory makeScreen, MainDispatch dispatchMain)
      : makeScreen_(std::move(makeScreen)), dispatchMain_(std::move(dispatchMain)) {}

  std::shared_ptr<Coordinator> createCoordinatorUsing(
      const QXPlatform::UNNotificationRequest& request) const override;

 private:
  CarouselScreenFactory makeScreen_;
  MainDispatch dispatchMain_;
};

}  // namespace QXExtensionSDK
