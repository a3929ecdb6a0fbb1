#pragma once

#include <functional>
#include <memory>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/qx/CarouselOptions.h"

namespace qx {

// A content extension whose user is played by commands (QXPlatform::ContentExtensionDriver has the list).
// Main thread.
class PlayedCarousel {
 public:
  // Hears how the carousel stands after a step that was taken in its window.
  using StepHandler = std::function<void(const QXPlatform::Dictionary& state)>;

  virtual ~PlayedCarousel() = default;

  // Answers how the carousel stands then, or why the command was refused.
  virtual QXPlatform::Result<QXPlatform::Dictionary> play(const QXPlatform::Dictionary& command) = 0;
  // Lets the user have its open window until that is closed.
  virtual void runWindow() = 0;
};

// Where a carousel is shown.
struct CarouselPlace {
  int width;               // points
  bool hasWindow = false;  // may open one
};

// The framework's own extension, or the program that the options name.
QXPlatform::Result<std::unique_ptr<PlayedCarousel>> makeCarousel(const CarouselInvocation& invocation,
                                                                 CarouselPlace place,
                                                                 PlayedCarousel::StepHandler stepTaken);

}  // namespace qx
