#include "tools/qx/carousel/CarouselReport.h"

#include <cmath>
#include <utility>
#include <vector>

#include "QXPlatform/log/Log.h"

namespace qx {

namespace {

using QXExtensionSDK::CarouselPanelView;
using QXExtensionSDK::CarouselViewController;
using QXExtensionSDK::CarouselViewModel;
using QXPlatform::Dictionary;
using QXPlatform::Value;

const char* name(QXExtensionSDK::TimerState state) {
  switch (state) {
    case QXExtensionSDK::TimerState::notStarted:
      return "notStarted";
    case QXExtensionSDK::TimerState::running:
      return "running";
    case QXExtensionSDK::TimerState::stopped:
      return "stopped";
  }
  return "";
}

const char* name(QXExtensionSDK::ImageLoadingState state) {
  switch (state) {
    case QXExtensionSDK::ImageLoadingState::notStarted:
      return "notStarted";
    case QXExtensionSDK::ImageLoadingState::downloading:
      return "downloading";
    case QXExtensionSDK::ImageLoadingState::success:
      return "success";
    case QXExtensionSDK::ImageLoadingState::failed:
      return "failed";
  }
  return "";
}

const char* name(QXExtensionSDK::FontStyle style) {
  switch (style) {
    case QXExtensionSDK::FontStyle::regular:
      return "regular";
    case QXExtensionSDK::FontStyle::bold:
      return "bold";
    case QXExtensionSDK::FontStyle::italic:
      return "italic";
  }
  return "";
}

const char* name(QXExtensionSDK::TextAlignment alignment) {
  switch (alignment) {
    case QXExtensionSDK::TextAlignment::beginning:
      return "beginning";
    case QXExtensionSDK::TextAlignment::center:
      return "center";
    case QXExtensionSDK::TextAlignment::end:
      return "end";
  }
  return "";
}

const char* name(QXExtensionSDK::ViewTextState state) {
  switch (state) {
    case QXExtensionSDK::ViewTextState::none:
      return "none";
    case QXExtensionSDK::ViewTextState::onlyTitle:
      return "onlyTitle";
    case QXExtensionSDK::ViewTextState::onlySubtitle:
      return "onlySubtitle";
    case QXExtensionSDK::ViewTextState::both:
      return "both";
  }
  return "";
}

const char* name(QXExtensionSDK::ActionType type) {
  switch (type) {
    case QXExtensionSDK::ActionType::openApp:
      return "openApp";
    case QXExtensionSDK::ActionType::openDeepLink:
      return "openDeepLink";
    case QXExtensionSDK::ActionType::openWebUrl:
      return "openWebUrl";
    case QXExtensionSDK::ActionType::openCloudPage:
      return "openCloudPage";
  }
  return "";
}

using Entries = std::vector<std::pair<std::string, Value>>;

void addText(Entries& entries, const char* key,
             const std::optional<QXExtensionSDK::TextComponent>& component) {
  if (!component) return;
  entries.emplace_back(key, Dictionary{{"text", component->text},
                                       {"size", std::llround(component->font.pointSize)},
                                       {"style", name(component->font.style)},
                                       {"alignment", name(component->textAlignment)},
                                       {"color", component->textColor.hexString()}});
}

Value reportPanel(const QXExtensionSDK::PanelItemComponent& panel, const CarouselPanelView* view) {
  using QXExtensionSDK::ImageLoadingState;
  Entries entries{{"url", panel.media.url},
                  {"mediaBackground", panel.media.backgroundColor.hexString()},
                  {"panelColor", panel.panelColor.hexString()},
                  {"textState", name(panel.textState)},
                  {"imageState", name(view == nullptr ? ImageLoadingState::notStarted
                                                      : view->imageView().imageLoadingState())},
                  {"imageDownloadCount", view == nullptr ? 0 : view->imageView().imageDownloadCount()}};
  addText(entries, "altText", panel.media.altText);
  addText(entries, "title", panel.title);
  addText(entries, "subTitle", panel.subTitle);
  if (panel.action) {
    const Dictionary action{{"kind", name(panel.action->kind)}};
    const auto& url = panel.action->url;
    entries.emplace_back("action", url ? action.setting("url", url->absoluteString()) : action);
  }
  return Dictionary::fromEntries(entries);
}

Value reportNavigation(const QXExtensionSDK::ViewTemplateNavigationState& state) {
  const Dictionary navigation{{"showNavigationButtons", state.showNavigationButtons},
                              {"backButtonEnabled", state.backButtonEnabled},
                              {"nextButtonEnabled", state.nextButtonEnabled}};
  if (!state.buttonClickState) return navigation;
  const bool isNext = *state.buttonClickState == QXExtensionSDK::NavigationButtonClickState::next;
  return navigation.setting("buttonClickState", isNext ? "next" : "back");
}

struct NoLog final : QXPlatform::LogSink {
  void write(const QXPlatform::LogRecord& /*record*/) override {}
};

// Asks without leaving a trace: nobody has answered the notification.
QXPlatform::UNNotificationContentExtensionResponseOption responseOption(
    QXPlatform::ContentExtensionHost& host) {
  NoLog sink;
  const QXPlatform::ScopedLogSink quiet(sink);
  return host.respond();
}

}  // namespace

Dictionary reportCarousel(std::string_view step, QXPlatform::ContentExtensionHost& host,
                          const CarouselViewController* screen) {
  const bool isShown = screen != nullptr && !host.isCollapsed();
  static const CarouselViewModel nothing;
  const CarouselViewModel& viewModel = isShown ? screen->viewModel() : nothing;
  std::vector<Value> panels;
  for (std::size_t i = 0; viewModel.panels != nullptr && i < viewModel.panels->size(); ++i) {
    panels.push_back(reportPanel((*viewModel.panels)[i], screen->panelView(i)));
  }
  const QXPlatform::Size size = host.preferredContentSize();
  return {
      {"step", step},
      {"outcome", isShown ? "carousel" : "collapsed"},
      {"preferredContentSize", std::vector<Value>{std::llround(size.width), std::llround(size.height)}},
      {"currentPanelIndex", viewModel.currentPanelIndex},
      {"hasValidTimer", viewModel.hasValidTimer},
      {"timerInMilliSec", viewModel.timerInMilliSec},
      {"timerState", name(screen != nullptr ? screen->timerState() : QXExtensionSDK::TimerState::notStarted)},
      {"navigationState", reportNavigation(viewModel.navigationState)},
      {"panels", panels},
      {"defaultActionPerformed", host.isDefaultActionPerformed()},
      {"responseOption", QXPlatform::responseOptionName(responseOption(host))}};
}

}  // namespace qx
