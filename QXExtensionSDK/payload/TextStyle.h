#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "QXPlatform/foundation/JSONCoding.h"

namespace QXExtensionSDK {

enum class FontSize : std::uint8_t { small, medium, large };
constexpr auto rawValues(QXPlatform::RawValuesOf<FontSize>) {
  return std::to_array<QXPlatform::RawCase<FontSize>>(
      {{FontSize::small, "S"}, {FontSize::medium, "M"}, {FontSize::large, "L"}});
}
constexpr double points(FontSize size) {
  return size == FontSize::small ? 12 : size == FontSize::medium ? 14 : 16;
}

// At the leading edge, in the middle, at the trailing edge.
enum class TextAlignmentMode : std::uint8_t { beginning, center, end };
constexpr auto rawValues(QXPlatform::RawValuesOf<TextAlignmentMode>) {
  return std::to_array<QXPlatform::RawCase<TextAlignmentMode>>(
      {{TextAlignmentMode::beginning, "B"}, {TextAlignmentMode::center, "C"}, {TextAlignmentMode::end, "E"}});
}

enum class FontStyle : std::uint8_t { regular, bold, italic };
constexpr auto rawValues(QXPlatform::RawValuesOf<FontStyle>) {
  return std::to_array<QXPlatform::RawCase<FontStyle>>(
      {{FontStyle::regular, "R"}, {FontStyle::bold, "B"}, {FontStyle::italic, "I"}});
}

// How a text of the payload looks. What is absent falls back to the default of the text's slot.
struct TextStyle {
  std::optional<std::string> fontColor;
  std::optional<FontSize> fontSize;
  std::optional<TextAlignmentMode> textAlignment;
  std::optional<FontStyle> fontStyle;

  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(
        jsonField("fc", &TextStyle::fontColor), jsonField("fz", &TextStyle::fontSize),
        jsonField("an", &TextStyle::textAlignment), jsonField("fs", &TextStyle::fontStyle));
  }
  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

}  // namespace QXExtensionSDK
