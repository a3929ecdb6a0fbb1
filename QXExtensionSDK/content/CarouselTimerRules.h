#pragma once

#include <cstdint>

#include "QXExtensionSDK/content/CarouselViewModel.h"

namespace QXExtensionSDK {

enum class TimerState : std::uint8_t { notStarted, running, stopped };

// Decides when the carousel's automatic advance begins and ends: it runs once through the panels, rests on
// the last one and never starts again. Main thread.
class CarouselTimerRules {
 public:
  enum class Order : std::uint8_t {
    none,
    // Start a repeating timer of the view model's timerInMilliSec, at least 1; each tick asks for the next
    // panel.
    start,
    stop,
  };

  // To be asked each time after the screen has applied a view model; at most one order comes of it.
  Order viewModelApplied(const CarouselViewModel& viewModel);

  TimerState state() const { return state_; }

 private:
  TimerState state_ = TimerState::notStarted;
};

}  // namespace QXExtensionSDK
