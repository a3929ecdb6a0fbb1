#pragma once

#include <QImage>
#include <QSize>
#include <functional>
#include <memory>

#include "QXPlatform/foundation/Data.h"

namespace QXPlatform {

// Decodes an image of a stranger, by ImageProcess, so that it fills `size`, in pixels: scaled to cover it,
// what stands over is cut off evenly. Null when the bytes are no image that can be shown.
//
// Images are decoded one after the other, away from the main thread. `isWanted` is asked on the decoding
// thread, before and during the work; an image that nobody wants any more is dropped, without a completion.
// Otherwise the completion follows on the main thread. The end of the application drops what is left.
//
// REQUIRES: an application object. Main thread.
void decodeImageFillingAsync(std::shared_ptr<const Data> bytes, QSize size, std::function<bool()> isWanted,
                             std::function<void(QImage)> completion);

}  // namespace QXPlatform
