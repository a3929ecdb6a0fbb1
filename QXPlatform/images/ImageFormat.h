#pragma once

#include <cstdint>
#include <string_view>

namespace QXPlatform {

enum class ImageFormat : std::uint8_t { none, png, jpeg, gif, webp, bmp, avif };

// The format of an encoded image, told by its first bytes alone. Any thread.
ImageFormat imageFormatOf(std::string_view bytes);

}  // namespace QXPlatform
