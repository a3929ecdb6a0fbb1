#include "tools/qx/check/PanelChecks.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "QXExtensionSDK/payload/PanelItem.h"
#include "QXExtensionSDK/payload/UserActionResolving.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

using QXExtensionSDK::PanelItem;
using QXExtensionSDK::TextBlock;
using QXPlatform::Value;

bool showsText(const std::optional<TextBlock>& block) {
  return block && !block->text.empty();
}

void checkText(const PanelItem& panel, const std::string& place, Findings& findings) {
  if (showsText(panel.title) || showsText(panel.subTitle)) return;
  findings.warn(place, "a panel without text: neither title nor subtitle");
}

void checkActions(const PanelItem& panel, const std::string& place, Findings& findings) {
  if (!panel.actions || panel.actions->empty()) return;
  if (!QXExtensionSDK::resolveUserAction(panel.actions, QXExtensionSDK::Logger::content())) {
    findings.warn(place + "/ac/0/ul", "no URL, so no action: a tap opens the app but is not recorded");
  }
  if (panel.actions->size() > 1) findings.warn(place + "/ac/1", "ignored: only the first action counts");
}

}  // namespace

void checkTemplate(const Value& richFeatures, Findings& findings) {
  const Value* panels = findPanels(richFeatures);
  if (panels == nullptr) return;
  const std::size_t count = panels->elements().size();
  if (count == 0) findings.warn("/_rf/vt/it", "no panels: the carousel is empty");
  const Value* timer = richFeatures["vt"].find("tms");
  if (timer == nullptr) return;
  const auto milliseconds = QXPlatform::decodeValue<std::int64_t>(*timer);
  if (!milliseconds) return;
  if (*milliseconds < 1) {
    findings.warn("/_rf/vt/tms", "below 1: the carousel does not advance by itself");
  } else if (count < 2) {
    findings.warn("/_rf/vt/tms", "ignored: there is no second panel to advance to");
  }
}

void checkPanels(const Value& richFeatures, Findings& findings) {
  const Value* panels = findPanels(richFeatures);
  if (panels == nullptr) return;
  for (std::size_t i = 0; i < panels->elements().size(); ++i) {
    const auto panel = QXPlatform::decodeValue<PanelItem>(panels->elements()[i]);
    if (!panel) continue;
    checkText(*panel, panelPlace(i), findings);
    checkActions(*panel, panelPlace(i), findings);
  }
}

}  // namespace qx
