#pragma once

#include "QXExtensionSDK/content/CarouselScreen.h"
#include "QXPlatform/ui/NSExtensionContext.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {

class RecordingExtensionContext final : public QXPlatform::NSExtensionContext {
 public:
  void performNotificationDefaultAction() override { ++defaultActionCount; }

  int defaultActionCount = 0;
};

// A screen without a toolkit; remembers what it was told.
class FakeCarouselScreen final : public CarouselScreen {
 public:
  void setDelegate(std::weak_ptr<CarouselViewControllerDelegate> to) override { delegate = std::move(to); }
  void apply(const CarouselViewModel& viewModel) override {
    applied = viewModel;
    collapsed = false;
    ++applyCount;
  }
  const CarouselViewModel& viewModel() const override { return applied; }
  void collapse() override { collapsed = true; }
  QXPlatform::NSExtensionContext* extensionContext() const override { return context; }
  QXPlatform::UIViewController& viewController() override { throw std::logic_error("no toolkit"); }

  std::weak_ptr<CarouselViewControllerDelegate> delegate;
  CarouselViewModel applied;
  int applyCount = 0;
  bool collapsed = false;
  QXPlatform::NSExtensionContext* context = nullptr;
};

}  // namespace QXExtensionSDK
