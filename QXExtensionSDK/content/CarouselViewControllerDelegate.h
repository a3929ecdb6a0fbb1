#pragma once

namespace QXExtensionSDK {

// Hears what happens on the carousel screen. Main thread.
class CarouselViewControllerDelegate {
 public:
  virtual ~CarouselViewControllerDelegate() = default;

  virtual void backButtonTapped() = 0;
  // The next button, and each tick of the automatic advance.
  virtual void nextButtonTapped() = 0;
  // The panel that is on screen was tapped.
  virtual void panelTapped() = 0;
};

}  // namespace QXExtensionSDK
