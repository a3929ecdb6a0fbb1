#include "QXPlatform/images/ImageDecoder.h"

#include <utility>

#include "QXPlatform/images/ImageFormat.h"
#include "QXPlatform/libraries/images/Codecs.h"

namespace QXPlatform {

namespace {

bool decode(std::string_view bytes, ImageSink& sink) {
  switch (imageFormatOf(bytes)) {
    case ImageFormat::none:
      return false;
    case ImageFormat::png:
      return decodePNG(bytes, sink);
    case ImageFormat::jpeg:
      return decodeJPEG(bytes, sink);
    case ImageFormat::gif:
      return decodeGIF(bytes, sink);
    case ImageFormat::webp:
      return decodeWebP(bytes, sink);
    case ImageFormat::bmp:
      return decodeBMP(bytes, sink);
    case ImageFormat::avif:
      return decodeAVIF(bytes, sink);
  }
  return false;
}

}  // namespace

std::optional<Bitmap> decodeImage(std::string_view bytes, PixelSize place,
                                  std::pmr::memory_resource& memory) {
  if (place.empty()) return std::nullopt;
  ImageSink sink(place, memory);
  if (!decode(bytes, sink)) return std::nullopt;
  return std::move(sink).finish();
}

}  // namespace QXPlatform
