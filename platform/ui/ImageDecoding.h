#pragma once

#include <QImage>
#include <QSize>
#include <string_view>

namespace platform {

// Decodes a png, jpeg, gif (its first frame) or webp so that it fills `size`, in pixels: scaled to cover it,
// what stands over is cut off evenly. The image is never larger than that, and the work to get there is
// bounded: what declares more than 100 million pixels is not opened.
//
// Null when the bytes are no such image, or a damaged one. Any thread.
QImage decodeImageFilling(std::string_view bytes, QSize size);

}  // namespace platform
