#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "QXExtensionSDK/payload/GenericStyle.h"
#include "QXExtensionSDK/payload/PanelItem.h"

namespace QXExtensionSDK {

enum class ViewTemplateType : std::uint8_t { carousel };
constexpr auto rawValues(QXPlatform::RawValuesOf<ViewTemplateType>) {
  return std::to_array<QXPlatform::RawCase<ViewTemplateType>>({{ViewTemplateType::carousel, "0"}});
}

// What an expanded notification shows.
struct ViewTemplate {
  ViewTemplateType type = ViewTemplateType::carousel;
  // Between two steps of the automatic advance, which needs at least 1.
  std::optional<std::int64_t> timerInMilliSec;
  // Behind the images of the panels that have no style of their own.
  std::optional<GenericStyle> style;
  // In the order in which they are shown.
  std::vector<PanelItem> items;

  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(
        jsonField("t", &ViewTemplate::type), jsonField("tms", &ViewTemplate::timerInMilliSec),
        jsonField("s", &ViewTemplate::style), jsonField("it", &ViewTemplate::items));
  }
  friend bool operator==(const ViewTemplate&, const ViewTemplate&) = default;
};

}  // namespace QXExtensionSDK
