#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QXExtensionSDK/payload/Action.h"
#include "QXExtensionSDK/payload/Media.h"

namespace QXExtensionSDK {

// One panel of a carousel.
struct PanelItem {
  std::string identifier;
  Media media;
  std::optional<TextBlock> title;
  std::optional<TextBlock> subTitle;
  // Only the first counts.
  std::optional<std::vector<ActionSerDeWrapper>> actions;
  std::optional<GenericStyle> style;

  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(jsonField("id", &PanelItem::identifier), jsonField("md", &PanelItem::media),
                                  jsonField("ti", &PanelItem::title), jsonField("sti", &PanelItem::subTitle),
                                  jsonField("ac", &PanelItem::actions), jsonField("s", &PanelItem::style));
  }
  friend bool operator==(const PanelItem&, const PanelItem&) = default;
};

}  // namespace QXExtensionSDK
