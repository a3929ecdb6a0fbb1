#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace QXExtensionSDK {

enum class FontSize : std::uint8_t { small, medium, large };
// At the leading edge, in the middle, at the trailing edge.
enum class TextAlignmentMode : std::uint8_t { beginning, center, end };
enum class FontStyle : std::uint8_t { regular, bold, italic };

// How a text of the payload looks. What is absent falls back to the default of the text's slot.
struct TextStyle {
  std::optional<std::string> fontColor;
  std::optional<FontSize> fontSize;
  std::optional<TextAlignmentMode> textAlignment;
  std::optional<FontStyle> fontStyle;

  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

}  // namespace QXExtensionSDK
