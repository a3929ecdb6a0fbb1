#pragma once

#include <QImage>
#include <QSize>
#include <functional>
#include <memory>
#include <string_view>

#include "QXPlatform/foundation/Data.h"

namespace QXPlatform {

// Decodes a png, jpeg, gif (its first frame) or webp so that it fills `size`, in pixels: scaled to cover it,
// what stands over is cut off evenly. The image is never larger than that, and the work to get there is
// bounded. Refused are more than 100 million pixels; a picture beyond 64 MB on its way, which is 16
// megapixels of the formats that cannot scale while they are read, that is all but jpeg; and a jpeg for whose
// passes isImageAffordable() says no.
//
// Null when the bytes are no such image, or a damaged one. Any thread.
QImage decodeImageFilling(std::string_view bytes, QSize size);

// The same away from the main thread, one image at a time: decoding takes memory. `isWanted` is asked on the
// decoding thread when the image's turn has come; the completion follows on the main thread. An image that
// nobody wants any more is skipped, without a completion. The end of the application waits for the image
// under way and skips the others.
//
// REQUIRES: an application object. Main thread.
void decodeImageFillingAsync(std::shared_ptr<const Data> bytes, QSize size, std::function<bool()> isWanted,
                             std::function<void(QImage)> completion);

}  // namespace QXPlatform
