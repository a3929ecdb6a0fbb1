#include "QXExtensionSDK/content/CarouselInspection.h"

#include <QCoreApplication>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "QXExtensionSDK/content/CarouselClickStoring.h"
#include "QXPlatform/foundation/RawValues.h"

namespace QXExtensionSDK {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::nameIn;
using QXPlatform::RawCase;
using QXPlatform::Value;

constexpr auto kTimerStates = std::to_array<RawCase<TimerState>>({{TimerState::notStarted, "notStarted"},
                                                                  {TimerState::running, "running"},
                                                                  {TimerState::stopped, "stopped"}});
constexpr auto kImageStates =
    std::to_array<RawCase<ImageLoadingState>>({{ImageLoadingState::notStarted, "notStarted"},
                                               {ImageLoadingState::downloading, "downloading"},
                                               {ImageLoadingState::success, "success"},
                                               {ImageLoadingState::failed, "failed"}});
constexpr auto kFontStyles = std::to_array<RawCase<FontStyle>>(
    {{FontStyle::regular, "regular"}, {FontStyle::bold, "bold"}, {FontStyle::italic, "italic"}});
constexpr auto kAlignments = std::to_array<RawCase<TextAlignment>>({{TextAlignment::beginning, "beginning"},
                                                                    {TextAlignment::center, "center"},
                                                                    {TextAlignment::end, "end"}});
constexpr auto kTextStates =
    std::to_array<RawCase<ViewTextState>>({{ViewTextState::none, "none"},
                                           {ViewTextState::onlyTitle, "onlyTitle"},
                                           {ViewTextState::onlySubtitle, "onlySubtitle"},
                                           {ViewTextState::both, "both"}});
constexpr auto kActionKinds =
    std::to_array<RawCase<ActionType>>({{ActionType::openApp, "openApp"},
                                        {ActionType::openDeepLink, "openDeepLink"},
                                        {ActionType::openWebUrl, "openWebUrl"},
                                        {ActionType::openCloudPage, "openCloudPage"}});

using Entries = std::vector<std::pair<std::string, Value>>;

void addText(Entries& entries, const char* key, const std::optional<TextComponent>& component) {
  if (!component) return;
  entries.emplace_back(key, Dictionary{{"text", component->text},
                                       {"size", std::llround(component->font.pointSize)},
                                       {"style", nameIn(kFontStyles, component->font.style)},
                                       {"alignment", nameIn(kAlignments, component->textAlignment)},
                                       {"color", component->textColor.hexString()}});
}

Value reportPanel(const PanelItemComponent& panel, const CarouselPanelView* view) {
  Entries entries{
      {"url", panel.media.url},
      {"mediaBackground", panel.media.backgroundColor.hexString()},
      {"panelColor", panel.panelColor.hexString()},
      {"textState", nameIn(kTextStates, panel.textState)},
      {"imageState", nameIn(kImageStates, view == nullptr ? ImageLoadingState::notStarted
                                                          : view->imageView().imageLoadingState())},
      {"imageDownloadCount", view == nullptr ? 0 : view->imageView().imageDownloadCount()}};
  addText(entries, "altText", panel.media.altText);
  addText(entries, "title", panel.title);
  addText(entries, "subTitle", panel.subTitle);
  if (panel.action) {
    const Dictionary action{{"kind", nameIn(kActionKinds, panel.action->kind)}};
    const auto& url = panel.action->url;
    entries.emplace_back("action", url ? action.setting("url", url->absoluteString()) : action);
  }
  return Dictionary::fromEntries(entries);
}

Value reportNavigation(const ViewTemplateNavigationState& state) {
  const Dictionary navigation{{"showNavigationButtons", state.showNavigationButtons},
                              {"backButtonEnabled", state.backButtonEnabled},
                              {"nextButtonEnabled", state.nextButtonEnabled}};
  if (!state.buttonClickState) return navigation;
  const bool isNext = *state.buttonClickState == NavigationButtonClickState::next;
  return navigation.setting("buttonClickState", isNext ? "next" : "back");
}

}  // namespace

Dictionary inspectCarousel(const CarouselViewController* screen, bool isShown) {
  static const CarouselViewModel nothing;
  const CarouselViewModel& viewModel = screen != nullptr && isShown ? screen->viewModel() : nothing;
  std::vector<Value> panels;
  for (std::size_t i = 0; viewModel.panels != nullptr && i < viewModel.panels->size(); ++i) {
    panels.push_back(reportPanel((*viewModel.panels)[i], screen->panelView(i)));
  }
  return {
      {"currentPanelIndex", viewModel.currentPanelIndex},
      {"hasValidTimer", viewModel.hasValidTimer},
      {"timerInMilliSec", viewModel.timerInMilliSec},
      {"timerState", nameIn(kTimerStates, screen != nullptr ? screen->timerState() : TimerState::notStarted)},
      {"navigationState", reportNavigation(viewModel.navigationState)},
      {"panels", panels}};
}

void takeCarouselStep(CarouselViewController* screen, std::string_view step) {
  if (screen == nullptr) return;
  if (step == "next") screen->nextButton().click();
  if (step == "back") screen->backButton().click();
  if (step == "tick") screen->timerFired();
  if (step != "tap") return;
  screen->tapGesturePerformed();
  clickSavingQueue().sync([] {});
  QCoreApplication::sendPostedEvents();
}

}  // namespace QXExtensionSDK
