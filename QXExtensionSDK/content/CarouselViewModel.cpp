#include "QXExtensionSDK/content/CarouselViewModel.h"

namespace QXExtensionSDK {

ViewTemplateNavigationState makeNavigationState(std::size_t panelCount, std::int64_t currentPanelIndex,
                                                std::optional<NavigationButtonClickState> buttonClickState) {
  const bool navigable = panelCount >= 2;
  const auto lastIndex = static_cast<std::int64_t>(panelCount) - 1;
  return {navigable, navigable && currentPanelIndex >= 1, navigable && currentPanelIndex < lastIndex,
          buttonClickState};
}

}  // namespace QXExtensionSDK
