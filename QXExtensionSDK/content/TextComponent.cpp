#include "QXExtensionSDK/content/TextComponent.h"

namespace QXExtensionSDK {

TextComponent resolveText(const TextBlock& block, const TextBlockDefaultValue& slot, const Logger& logger) {
  const TextStyle style = block.style.value_or(TextStyle());
  const auto color = style.fontColor ? parseColor(*style.fontColor, logger) : std::nullopt;
  return {.text = block.text,
          .font = {.style = style.fontStyle.value_or(slot.fontStyle),
                   .pointSize = points(style.fontSize.value_or(slot.fontSize))},
          .textAlignment = style.textAlignment.value_or(slot.textAlignment),
          .textColor = color.value_or(slot.fontColor)};
}

}  // namespace QXExtensionSDK
