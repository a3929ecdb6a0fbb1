#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "QXExtensionSDK/content/TextComponent.h"
#include "QXExtensionSDK/payload/Color.h"
#include "QXExtensionSDK/payload/UserAction.h"

namespace QXExtensionSDK {

// A panel's image. `url` is the payload's text and may be no URL.
struct MediaComponent {
  std::string url;
  Color backgroundColor;
  std::optional<TextComponent> altText;
};

// Which texts the panels of a carousel leave room for; the same for all of them.
enum class ViewTextState : std::uint8_t { none, onlyTitle, onlySubtitle, both };

// One panel with every attribute settled.
struct PanelItemComponent {
  MediaComponent media;
  std::optional<TextComponent> title;
  std::optional<TextComponent> subTitle;
  // Nothing when a tap on the panel has no action.
  std::optional<UserAction> action;
  Color panelColor;
  ViewTextState textState;
};

}  // namespace QXExtensionSDK
