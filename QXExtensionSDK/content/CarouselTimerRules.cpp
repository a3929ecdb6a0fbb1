#include "QXExtensionSDK/content/CarouselTimerRules.h"

namespace QXExtensionSDK {

namespace {

bool restsOnLastPanel(const CarouselViewModel& viewModel) {
  return viewModel.panels != nullptr &&
         viewModel.currentPanelIndex == static_cast<std::int64_t>(viewModel.panels->size()) - 1;
}

}  // namespace

CarouselTimerRules::Order CarouselTimerRules::viewModelApplied(const CarouselViewModel& viewModel) {
  if (state_ == TimerState::notStarted && viewModel.hasValidTimer && viewModel.timerInMilliSec >= 1) {
    state_ = TimerState::running;
    return Order::start;
  }
  if (state_ == TimerState::running && restsOnLastPanel(viewModel)) {
    state_ = TimerState::stopped;
    return Order::stop;
  }
  return Order::none;
}

}  // namespace QXExtensionSDK
