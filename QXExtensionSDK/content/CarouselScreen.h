#pragma once

#include <functional>
#include <memory>

#include "QXExtensionSDK/content/CarouselViewControllerDelegate.h"
#include "QXExtensionSDK/content/CarouselViewModel.h"

namespace QXPlatform {
class NSExtensionContext;
class UIViewController;
}  // namespace QXPlatform

namespace QXExtensionSDK {

// The screen that shows a carousel, as its coordinator sees it: without the view toolkit. Main thread.
class CarouselScreen {
 public:
  virtual ~CarouselScreen() = default;

  // Held weakly.
  virtual void setDelegate(std::weak_ptr<CarouselViewControllerDelegate> delegate) = 0;

  // Shows the view model, then follows the timer rules. One with panels undoes a collapse; one without leaves
  // what is shown as it is.
  virtual void apply(const CarouselViewModel& viewModel) = 0;
  // What was applied last; without panels before the first time.
  virtual const CarouselViewModel& viewModel() const = 0;
  // The preferred content size becomes the current width by one point. Nothing is reported to the delegate,
  // ticks included, until the next view model is applied.
  virtual void collapse() = 0;

  // Null outside an extension.
  virtual QXPlatform::NSExtensionContext* extensionContext() const = 0;
  // The controller to embed, which is this screen's own.
  virtual QXPlatform::UIViewController& viewController() = 0;
};

// Makes an empty screen.
using CarouselScreenFactory = std::function<std::shared_ptr<CarouselScreen>()>;

}  // namespace QXExtensionSDK
