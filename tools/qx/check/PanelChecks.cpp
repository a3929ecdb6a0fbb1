#include "tools/qx/check/PanelChecks.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QXExtensionSDK/payload/CarouselDefaultValue.h"
#include "QXExtensionSDK/payload/PanelItem.h"
#include "QXExtensionSDK/payload/UserActionResolving.h"
#include "tools/qx/check/Contrast.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

using QXExtensionSDK::Color;
using QXExtensionSDK::Logger;
using QXExtensionSDK::PanelItem;
using QXExtensionSDK::TextBlock;
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

Color colorOr(const std::optional<std::string>& text, Color otherwise) {
  return text ? parseColor(*text, Logger::content()).value_or(otherwise) : otherwise;
}

Color textColor(const TextBlock& block, Color otherwise) {
  return block.style ? colorOr(block.style->fontColor, otherwise) : otherwise;
}

std::string inOneDecimal(double ratio) {
  const auto tenths = static_cast<int>(ratio * 10);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

void checkText(const TextBlock& block, const std::string& place, Color textColor, Color panelColor,
               Findings& findings) {
  if (block.text.empty()) return;
  if (isBlank(block.text)) return findings.warn(place + "/tx", "nothing but white space");
  const double ratio = contrast(textColor, panelColor);
  if (ratio >= kLeastContrast) return;
  const bool hasOwnColor = block.style && block.style->fontColor;
  findings.warn(place + (hasOwnColor ? "/s/fc" : ""),
                "hard to read: " + textColor.hexString() + " on the panel's " + panelColor.hexString() +
                    " has a contrast of " + inOneDecimal(ratio) + ":1, below 3:1");
}

bool showsText(const std::optional<TextBlock>& block) {
  return block && !block->text.empty();
}

void checkTexts(const PanelItem& panel, const std::string& place, Findings& findings) {
  static const QXExtensionSDK::CarouselStaticDefaultValueProvider provider;
  const auto& defaults = provider.defaultValue().panel;
  if (!showsText(panel.title) && !showsText(panel.subTitle)) {
    return findings.warn(place, "a panel without text: neither title nor subtitle");
  }
  const Color panelColor =
      panel.style ? colorOr(panel.style->backgroundColor, defaults.panelColor) : defaults.panelColor;
  if (panel.title) {
    checkText(*panel.title, place + "/ti", textColor(*panel.title, defaults.title.fontColor), panelColor,
              findings);
  }
  if (panel.subTitle) {
    checkText(*panel.subTitle, place + "/sti", textColor(*panel.subTitle, defaults.subTitle.fontColor),
              panelColor, findings);
  }
}

void checkActions(const PanelItem& panel, const std::string& place, Findings& findings) {
  if (!panel.actions || panel.actions->empty()) {
    return findings.warn(place + (panel.actions ? "/ac" : ""),
                         "a panel without action: a tap opens the app but is not recorded",
                         R"(write "ac": [{"t": "0"}])");
  }
  if (!QXExtensionSDK::resolveUserAction(panel.actions, Logger::content())) {
    findings.warn(place + "/ac/0/ul", "no URL, so no action: a tap opens the app but is not recorded");
  }
  if (panel.actions->size() > 1) findings.warn(place + "/ac/1", "ignored: only the first action counts");
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
    const auto panel = QXPlatform::decodeValue<PanelItem>(panels->elements()[i]);
    if (!panel) continue;
    checkTexts(*panel, panelPlace(i), findings);
    checkActions(*panel, panelPlace(i), findings);
  }
}

}  // namespace qx
