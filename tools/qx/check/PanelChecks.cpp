#include "tools/qx/check/PanelChecks.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "QXExtensionSDK/payload/CarouselDefaultValue.h"
#include "QXExtensionSDK/payload/PanelItem.h"
#include "QXExtensionSDK/payload/UserActionResolving.h"
#include "tools/qx/check/Contrast.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

using QXExtensionSDK::Color;
using QXExtensionSDK::Logger;
using QXPlatform::Value;

// What the eye still takes for text.
constexpr double kLeastContrast = 3;

// Characters that leave no mark, those without width included.
constexpr auto kBlanks = std::to_array<std::string_view>(
    {" ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00A0", "\u00AD",
     "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007",
     "\u2008", "\u2009", "\u200A", "\u200B", "\u200C", "\u200D", "\u200E", "\u200F", "\u2028",
     "\u2029", "\u202F", "\u205F", "\u2060", "\u061C", "\u180E", "\u2066", "\u2067", "\u2068",
     "\u2069", "\u2800", "\u3000", "\u3164", "\uFEFF"});

bool isBlank(std::string_view text) {
  while (!text.empty()) {
    const auto* blank =
        std::ranges::find_if(kBlanks, [text](std::string_view each) { return text.starts_with(each); });
    if (blank == kBlanks.end()) return false;
    text.remove_prefix(blank->size());
  }
  return true;
}

Color colorOr(const Value& text, Color otherwise) {
  const auto written = text.string();
  return written ? parseColor(*written, Logger::content()).value_or(otherwise) : otherwise;
}

std::string inOneDecimal(double ratio) {
  const auto tenths = static_cast<int>(ratio * 10);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

// Of what is no text, somebody else has said so.
void checkText(const Value& block, const std::string& place, Color defaultColor, Color panelColor,
               Findings& findings) {
  const auto text = block["tx"].string();
  if (!text || text->empty()) return;
  if (isBlank(*text)) return findings.warn(place + "/tx", "nothing but white space");
  const Value& ownColor = block["s"]["fc"];
  const Color textColor = colorOr(ownColor, defaultColor);
  const double ratio = contrast(textColor, panelColor);
  if (ratio >= kLeastContrast) return;
  findings.warn(place + (ownColor.isNull() ? "" : "/s/fc"),
                "hard to read: " + textColor.hexString() + " on the panel's " + panelColor.hexString() +
                    " has a contrast of " + inOneDecimal(ratio) + ":1, below 3:1");
}

bool isWithoutText(const Value& block) {
  return block.isNull() || block["tx"].string() == "";
}

void checkTexts(const Value& panel, const std::string& place, Findings& findings) {
  static const QXExtensionSDK::CarouselStaticDefaultValueProvider provider;
  const auto& defaults = provider.defaultValue().panel;
  if (isWithoutText(panel["ti"]) && isWithoutText(panel["sti"])) {
    return findings.warn(place, "a panel without text: neither title nor subtitle");
  }
  const Color panelColor = colorOr(panel["s"]["bgc"], defaults.panelColor);
  checkText(panel["ti"], place + "/ti", defaults.title.fontColor, panelColor, findings);
  checkText(panel["sti"], place + "/sti", defaults.subTitle.fontColor, panelColor, findings);
}

void checkActions(const Value& panel, const std::string& place, Findings& findings) {
  const Value& written = panel["ac"];
  if (written.isNull() || (written.isArray() && written.elements().empty())) {
    return findings.warn(place + (written.isNull() ? "" : "/ac"),
                         "a panel without action: a tap opens the app but is not recorded",
                         R"(write "ac": [{"t": "0"}])");
  }
  const auto actions = QXPlatform::decodeValue<std::vector<QXExtensionSDK::ActionSerDeWrapper>>(written);
  if (!actions) return;
  if (!QXExtensionSDK::resolveUserAction(*actions, Logger::content())) {
    findings.warn(place + "/ac/0/ul", "no URL, so no action: a tap opens the app but is not recorded");
  }
  if (actions->size() > 1) findings.warn(place + "/ac/1", "ignored: only the first action counts");
}

}  // namespace

void checkTemplate(const Value& richFeatures, Findings& findings) {
  const Value* panels = findPanels(richFeatures);
  if (panels == nullptr) return;
  const std::size_t count = panels->elements().size();
  if (count == 0) findings.error("/_rf/vt/it", "no panels: there is nothing to show");
  const auto milliseconds = QXPlatform::decodeValue<std::int64_t>(richFeatures["vt"]["tms"]);
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
    const Value& panel = panels->elements()[i];
    if (!panel.isDictionary()) continue;
    checkTexts(panel, panelPlace(i), findings);
    checkActions(panel, panelPlace(i), findings);
  }
}

}  // namespace qx
