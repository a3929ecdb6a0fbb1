#include <avif/avif.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "QXPlatform/images/ImageDecoder.h"
#include "QXPlatform/libraries/images/Codecs.h"

namespace QXPlatform {

namespace {

struct DestroyAVIF {
  void operator()(avifDecoder* decoder) const { avifDecoderDestroy(decoder); }
  void operator()(avifImage* image) const { avifImageDestroy(image); }
};
using Decoder = std::unique_ptr<avifDecoder, DestroyAVIF>;
using Image = std::unique_ptr<avifImage, DestroyAVIF>;

Orientation orientation(const avifImage& image) {
  Orientation orientation;
  if ((image.transformFlags & AVIF_TRANSFORM_IROT) != 0) {
    const int quarterTurns = image.irot.angle & 3;  // anticlockwise
    orientation = {quarterTurns % 2 != 0, quarterTurns >= 2, quarterTurns == 1 || quarterTurns == 2};
  }
  if ((image.transformFlags & AVIF_TRANSFORM_IMIR) != 0) {
    bool& flips = image.imir.mode == 0 ? orientation.flipsVertically : orientation.flipsHorizontally;
    flips = !flips;
  }
  return orientation;
}

ColorDescription color(const avifImage& image) {
  ColorDescription color;
  color.iccProfile.assign(reinterpret_cast<const char*>(image.icc.data), image.icc.size);
  if (image.colorPrimaries != AVIF_COLOR_PRIMARIES_UNSPECIFIED &&
      image.colorPrimaries != AVIF_COLOR_PRIMARIES_BT709) {
    std::array<float, 8> points{};
    avifColorPrimariesGetValues(image.colorPrimaries, points.data());
    color.chromaticities = Chromaticities{
        {points[6], points[7]}, {points[0], points[1]}, {points[2], points[3]}, {points[4], points[5]}};
  }
  if (image.transferCharacteristics == AVIF_TRANSFER_CHARACTERISTICS_LINEAR) color.gamma = 1.0;
  return color;
}

// As many rows at once as a decoder's blocks have.
bool addRows(const avifImage& image, ImageSink& sink) {
  constexpr std::uint32_t kRows = 64;
  const Image part(avifImageCreateEmpty());
  std::vector<std::uint8_t> pixels(std::size_t{image.width} * 4 * kRows);
  for (std::uint32_t top = 0; top < image.height; top += kRows) {
    const avifCropRect area{0, top, image.width, std::min(kRows, image.height - top)};
    avifRGBImage rgb;
    if (part == nullptr || avifImageSetViewRect(part.get(), &image, &area) != AVIF_RESULT_OK) return false;
    avifRGBImageSetDefaults(&rgb, part.get());
    rgb.format = AVIF_RGB_FORMAT_RGBA;
    rgb.depth = 8;
    rgb.pixels = pixels.data();
    rgb.rowBytes = image.width * 4;
    if (avifImageYUVToRGB(part.get(), &rgb) != AVIF_RESULT_OK) return false;
    for (std::uint32_t y = 0; y < area.height; ++y)
      sink.addRow(pixels.data() + std::size_t{y} * rgb.rowBytes);
  }
  return true;
}

}  // namespace

bool decodeAVIF(std::string_view bytes, ImageSink& sink) {
  constexpr long kBytesAPixel = 4;  // of deep colours, or two frames of ordinary ones
  const Decoder decoder(avifDecoderCreate());
  if (decoder == nullptr) return false;
  decoder->maxThreads = 1;
  decoder->ignoreExif = AVIF_TRUE;
  decoder->ignoreXMP = AVIF_TRUE;
  decoder->strictFlags = AVIF_STRICT_DISABLED;
  decoder->imageSizeLimit = static_cast<std::uint32_t>(kMostDecodingBytes / kBytesAPixel);
  const bool isDecoded =
      avifDecoderSetIOMemory(decoder.get(), reinterpret_cast<const std::uint8_t*>(bytes.data()),
                             bytes.size()) == AVIF_RESULT_OK &&
      avifDecoderParse(decoder.get()) == AVIF_RESULT_OK &&
      avifDecoderNextImage(decoder.get()) == AVIF_RESULT_OK;
  if (!isDecoded) return false;
  const avifImage& image = *decoder->image;
  const PixelSize size{static_cast<int>(image.width), static_cast<int>(image.height)};
  return sink.begin(size, orientation(image), color(image)) && addRows(image, sink);
}

}  // namespace QXPlatform
