#pragma once

#include <cstdint>
#include <string_view>

namespace QXPlatform {

enum class ImageFormat : std::uint8_t { none, png, jpeg, gif, webp };

// The format of an encoded image, told by its first bytes alone. Any thread.
ImageFormat imageFormatOf(std::string_view bytes);

// Whether the image runs to its end, as far as its own structure tells; of an animation the first frame
// counts. Decoders fill what is missing with grey, which nobody should be shown. Any thread, any bytes.
bool isImageComplete(std::string_view bytes, ImageFormat format);

// Whether a decoder can do with 48 MB beside the picture itself, and with 64 passes over it. What comes in
// several passes, such as a progressive photograph, is kept whole and unpacked until the last one; 12
// megapixels fit as cameras and the web write them. Any thread, any bytes.
bool isImageAffordable(std::string_view bytes, ImageFormat format);

}  // namespace QXPlatform
