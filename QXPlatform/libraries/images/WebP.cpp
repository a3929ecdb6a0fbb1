#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "QXPlatform/images/ImageDecoder.h"
#include "QXPlatform/libraries/images/Codecs.h"

namespace QXPlatform {

namespace {

struct DeleteDemuxer {
  void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DeleteDemuxer>;

struct Frame : WebPIterator {
  explicit Frame(const WebPDemuxer* demuxer)
      : WebPIterator{}, isThere(WebPDemuxGetFrame(demuxer, 1, this) != 0 && complete != 0) {}
  ~Frame() { WebPDemuxReleaseIterator(this); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  bool isThere;
};

std::string_view chunk(const WebPDemuxer* demuxer, const char* name) {
  WebPChunkIterator iterator;
  if (WebPDemuxGetChunk(demuxer, name, 1, &iterator) == 0) return {};
  const std::string_view bytes(reinterpret_cast<const char*>(iterator.chunk.bytes), iterator.chunk.size);
  WebPDemuxReleaseChunkIterator(&iterator);
  return bytes;
}

Orientation orientation(const WebPDemuxer* demuxer) {
  constexpr std::string_view kPrefix("Exif\0\0", 6);  // which some writers keep
  const std::string_view exif = chunk(demuxer, "EXIF");
  return orientationOfExif(exif.starts_with(kPrefix) ? exif.substr(kPrefix.size()) : exif);
}

// Lossless images are kept whole, of others the alpha is.
bool isAffordable(const WebPBitstreamFeatures& features) {
  constexpr int kLossless = 2;
  const int bytesAPixel = features.format == kLossless ? 4 : features.has_alpha;
  return long{features.width} * features.height * bytesAPixel <= kMostDecodingBytes;
}

// The frame, scaled by the decoder to that size; null when it cannot be read.
std::unique_ptr<std::uint8_t[]> decodeFrame(const Frame& frame, PixelSize size) {
  WebPDecoderConfig config;
  const bool isReady =
      WebPInitDecoderConfig(&config) != 0 &&
      WebPGetFeatures(frame.fragment.bytes, frame.fragment.size, &config.input) == VP8_STATUS_OK &&
      isAffordable(config.input);
  if (!isReady) return nullptr;
  const std::size_t length = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 4;
  auto pixels = std::make_unique_for_overwrite<std::uint8_t[]>(length);
  config.options.use_scaling = size.width != config.input.width || size.height != config.input.height ? 1 : 0;
  config.options.scaled_width = size.width;
  config.options.scaled_height = size.height;
  config.output.colorspace = MODE_RGBA;
  config.output.is_external_memory = 1;
  config.output.u.RGBA = {pixels.get(), size.width * 4, length};
  const bool isDecoded = WebPDecode(frame.fragment.bytes, frame.fragment.size, &config) == VP8_STATUS_OK;
  return isDecoded ? std::move(pixels) : nullptr;
}

}  // namespace

bool decodeWebP(std::string_view bytes, ImageSink& sink) {
  const WebPData data{reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
  // What is missing behind the first frame matters to nobody.
  const Demuxer demuxer(WebPDemuxPartial(&data, nullptr));
  if (demuxer == nullptr) return false;
  const Frame frame(demuxer.get());
  const PixelSize canvas{static_cast<int>(WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH)),
                         static_cast<int>(WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT))};
  ColorDescription color;
  color.iccProfile = chunk(demuxer.get(), "ICCP");
  if (!frame.isThere || !sink.begin(canvas, orientation(demuxer.get()), std::move(color))) return false;

  const int reduction = sink.reduction();
  sink.reduce(reduction);
  const auto reduced = [reduction](int length) { return (length + reduction - 1) / reduction; };
  const PixelSize size{reduced(frame.width), reduced(frame.height)};
  const auto pixels = decodeFrame(frame, size);
  if (pixels == nullptr) return false;

  const int left = frame.x_offset / reduction;
  const int top = frame.y_offset / reduction;
  const auto rowBytes = static_cast<std::size_t>(sink.size().width) * 4;
  const auto frameRowBytes = static_cast<std::size_t>(size.width) * 4;
  const std::size_t start = static_cast<std::size_t>(left) * 4;
  const std::size_t visible = std::min(frameRowBytes, rowBytes - start);
  const std::vector<std::uint8_t> nothing(rowBytes);
  std::vector<std::uint8_t> row(rowBytes);
  const auto rowAt = [&](int y) {
    if (y < top || y >= top + size.height) return nothing.data();
    const std::uint8_t* source = pixels.get() + static_cast<std::size_t>(y - top) * frameRowBytes;
    if (visible == rowBytes) return source;
    std::copy_n(source, visible, row.begin() + static_cast<std::ptrdiff_t>(start));
    return static_cast<const std::uint8_t*>(row.data());
  };
  for (int y = 0; y < sink.size().height; ++y) sink.addRow(rowAt(y));
  return true;
}

}  // namespace QXPlatform
