#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "QXExtensionSDK/content/PanelItemComponent.h"

namespace QXExtensionSDK {

enum class NavigationButtonClickState : std::uint8_t { back, next };

// How the two navigation buttons stand.
struct ViewTemplateNavigationState {
  bool showNavigationButtons = false;
  bool backButtonEnabled = false;
  bool nextButtonEnabled = false;
  // The button that moved the carousel here; absent in a freshly mapped model.
  std::optional<NavigationButtonClickState> buttonClickState;

  friend bool operator==(const ViewTemplateNavigationState&, const ViewTemplateNavigationState&) = default;
};

// Buttons are shown from two panels on, and each is enabled while there is a panel to go to on its side.
ViewTemplateNavigationState makeNavigationState(std::size_t panelCount, std::int64_t currentPanelIndex,
                                                std::optional<NavigationButtonClickState> buttonClickState);

using PanelItemComponents = std::vector<PanelItemComponent>;

// All that the carousel screen shows. A plain value; a copy shares the panels, so a step from panel to panel
// costs the same however many there are.
struct CarouselViewModel {
  bool hasValidTimer = false;
  // Between two steps of the automatic advance. Any number, also when the timer is not valid.
  std::int64_t timerInMilliSec = 0;
  ViewTemplateNavigationState navigationState;
  // May lie outside the panels after a refresh with fewer of them.
  std::int64_t currentPanelIndex = 0;
  // Null until a model has been mapped.
  std::shared_ptr<const PanelItemComponents> panels;
};

}  // namespace QXExtensionSDK
