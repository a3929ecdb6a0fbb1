#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "QXPlatform/images/Bitmap.h"

namespace QXPlatform {

// Pixels row by row from the top, each 0xAARRGGBB, in sRGB, the colours multiplied by alpha: as painters take
// them.
struct Picture {
  PixelSize size;
  bool isOpaque = false;
  std::shared_ptr<const std::uint32_t> pixels;
};

// Decodes images of strangers, each in a process of its own that the system holds to kMostDecodingBytes of
// memory and two seconds of processor: whatever bytes an image has, it costs its own end at most. Those
// processes are forked from one that is kept for it, with nothing but an idle thread in it. Any thread.
class ImageProcess {
 public:
  static ImageProcess& shared();
  virtual ~ImageProcess() = default;

  // Makes the process to fork from. To be called early in a program, while it has a single thread and is
  // small; otherwise the first image does it.
  virtual void start() = 0;

  // decodeImage() in a process. Blocks; asks `isWanted` at once and every few milliseconds, and gives the
  // image up when it says no. Nothing also when the process exceeds its limits.
  virtual std::optional<Picture> decode(std::string_view bytes, PixelSize place,
                                        const std::function<bool()>& isWanted) = 0;
};

}  // namespace QXPlatform
