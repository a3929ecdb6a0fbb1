#include "QXExtensionSDK/content/CarouselPresenter.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "QXExtensionSDK/payload/UserActionResolving.h"

namespace QXExtensionSDK {

namespace {

bool hasBackground(const std::optional<GenericStyle>& style) {
  return style && style->backgroundColor;
}

ViewTextState textStateOf(const std::vector<PanelItem>& items) {
  const bool title = std::ranges::any_of(items, [](const PanelItem& item) { return item.title.has_value(); });
  const bool subTitle =
      std::ranges::any_of(items, [](const PanelItem& item) { return item.subTitle.has_value(); });
  if (title) return subTitle ? ViewTextState::both : ViewTextState::onlyTitle;
  return subTitle ? ViewTextState::onlySubtitle : ViewTextState::none;
}

}  // namespace

CarouselPresenter::CarouselPresenter(
    const Logger& logger, std::unique_ptr<const CarouselDefaultValueProviding> defaultValueProvider)
    : logger_(logger),
      defaultValueProvider_(std::move(defaultValueProvider)),
      defaultValue_(defaultValueProvider_->defaultValue()) {}

CarouselViewModel CarouselPresenter::viewModel(const CarouselModel& model) const {
  const ViewTemplate& viewTemplate = model.viewTemplate;
  const ViewTextState textState = textStateOf(viewTemplate.items);
  PanelItemComponents panels;
  panels.reserve(viewTemplate.items.size());
  for (const PanelItem& item : viewTemplate.items) panels.push_back(panel(item, viewTemplate, textState));

  const std::int64_t timer = viewTemplate.timerInMilliSec.value_or(0);
  return {.hasValidTimer = timer >= 1,
          .timerInMilliSec = timer,
          .navigationState = makeNavigationState(panels.size(), currentSelectedPanelIndex_, std::nullopt),
          .currentPanelIndex = currentSelectedPanelIndex_,
          .panels = std::make_shared<const PanelItemComponents>(std::move(panels))};
}

PanelItemComponent CarouselPresenter::panel(const PanelItem& item, const ViewTemplate& viewTemplate,
                                            ViewTextState textState) const {
  const PanelDefaultValue& defaults = defaultValue_.panel;
  return {.media = media(item.media, viewTemplate),
          .title = text(item.title, defaults.title),
          .subTitle = text(item.subTitle, defaults.subTitle),
          .action = resolveUserAction(item.actions, logger_),
          .panelColor = background(item.style, {defaults.panelColor}),
          .textState = textState};
}

MediaComponent CarouselPresenter::media(const Media& media, const ViewTemplate& viewTemplate) const {
  const MediaDefaultValue& defaults = defaultValue_.panel.media;
  // A colour of the medium's own that is none does not fall back to the template's.
  const auto& style = hasBackground(media.style) ? media.style : viewTemplate.style;
  return {.url = media.url,
          .backgroundColor = background(style, {defaults.background}),
          .altText = text(media.altText, defaults.altText)};
}

Color CarouselPresenter::background(const std::optional<GenericStyle>& style,
                                    const BackgroundDefaultValue& slot) const {
  if (!hasBackground(style)) return slot.backgroundColor;
  return parseColor(*style->backgroundColor, logger_).value_or(slot.backgroundColor);
}

std::optional<TextComponent> CarouselPresenter::text(const std::optional<TextBlock>& block,
                                                     const TextBlockDefaultValue& slot) const {
  if (!block) return std::nullopt;
  return resolveText(*block, slot, logger_);
}

}  // namespace QXExtensionSDK
