#pragma once

#include <memory_resource>
#include <optional>
#include <string_view>

#include "QXPlatform/images/Bitmap.h"

namespace QXPlatform {

// Decodes a png, jpeg, gif or webp (of an animation the first frame), bmp or avif to
// what fills `place`: the middle part of its shape, turned as the camera says, and never larger than `place`;
// a smaller picture stays as small as it is. Metadata that no pixel needs is skipped.
//
// Nothing when the bytes are no such image, when pixels are missing, or when the picture has over 100 million
// of them or needs over kMostDecodingBytes on its way. That limit is estimated from what the image says of
// itself; crafted bytes may take more memory and time, so that images of strangers go to ImageProcess. Any
// thread.
//
// The pixels take their memory from there, unless they have to be turned.
std::optional<Bitmap> decodeImage(std::string_view bytes, PixelSize place,
                                  std::pmr::memory_resource& memory = *std::pmr::get_default_resource());

constexpr long kMostDecodingBytes = 80'000'000;

}  // namespace QXPlatform
