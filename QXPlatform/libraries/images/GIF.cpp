#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "QXPlatform/images/ImageDecoder.h"
#include "QXPlatform/libraries/images/Codecs.h"

namespace QXPlatform {

namespace {

struct CloseGIF {
  void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};
using GIFHandle = std::unique_ptr<GifFileType, CloseGIF>;

// Behind the end stand zeros, which end what may end and are an error elsewhere.
int readBytes(GifFileType* gif, GifByteType* target, int count) {
  auto& rest = *static_cast<std::string_view*>(gif->UserData);
  const auto wanted = static_cast<std::size_t>(count);
  const std::size_t available = std::min(wanted, rest.size());
  std::memcpy(target, rest.data(), available);
  std::memset(target + available, 0, wanted - available);
  rest.remove_prefix(available);
  return count;
}

// The index of the transparent colour, if any.
bool readExtension(GifFileType* gif, int& transparentIndex) {
  int code = 0;
  GifByteType* block = nullptr;
  if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) return false;
  while (block != nullptr) {
    GraphicsControlBlock control;
    if (code == GRAPHICS_EXT_FUNC_CODE && DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
      transparentIndex = control.TransparentColor;
    }
    if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) return false;
  }
  return true;
}

// Up to the first frame's pixels.
bool readToFrame(GifFileType* gif, int& transparentIndex) {
  for (;;) {
    GifRecordType type = UNDEFINED_RECORD_TYPE;
    if (DGifGetRecordType(gif, &type) == GIF_ERROR) return false;
    if (type == IMAGE_DESC_RECORD_TYPE) return DGifGetImageDesc(gif) == GIF_OK;
    if (type != EXTENSION_RECORD_TYPE || !readExtension(gif, transparentIndex)) return false;
  }
}

std::optional<std::vector<GifPixelType>> readFrame(GifFileType* gif) {
  const auto width = static_cast<std::size_t>(gif->Image.Width);
  const auto height = static_cast<std::size_t>(gif->Image.Height);
  if (width * height > std::size_t{kMostDecodingBytes}) return std::nullopt;
  std::vector<GifPixelType> indices(width * height);
  const auto readRow = [&](std::size_t y) {
    return DGifGetLine(gif, indices.data() + y * width, gif->Image.Width) == GIF_OK;
  };
  struct Pass {
    std::size_t first;
    std::size_t step;
  };
  static constexpr std::array<Pass, 1> kPlain{{{0, 1}}};
  static constexpr std::array<Pass, 4> kInterlaced{{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
  for (const Pass pass :
       gif->Image.Interlace ? std::span<const Pass>(kInterlaced) : std::span<const Pass>(kPlain)) {
    for (std::size_t y = pass.first; y < height; y += pass.step) {
      if (!readRow(y)) return std::nullopt;
    }
  }
  return indices;
}

using Color = std::array<std::uint8_t, 4>;

std::array<Color, 256> readColors(const ColorMapObject& map, int transparentIndex) {
  std::array<Color, 256> colors{};
  for (std::size_t i = 0; i < colors.size(); ++i) {
    const bool isKnown = i < static_cast<std::size_t>(map.ColorCount);
    const GifColorType color = isKnown ? map.Colors[i] : GifColorType{};
    const bool isTransparent = transparentIndex == static_cast<int>(i);
    colors[i] = {color.Red, color.Green, color.Blue, static_cast<std::uint8_t>(isTransparent ? 0 : 0xFF)};
  }
  return colors;
}

}  // namespace

bool decodeGIF(std::string_view bytes, ImageSink& sink) {
  const GIFHandle gif(DGifOpen(&bytes, readBytes, nullptr));
  int transparentIndex = NO_TRANSPARENT_COLOR;
  if (gif == nullptr || !readToFrame(gif.get(), transparentIndex)) return false;
  const GifImageDesc& frame = gif->Image;
  const PixelSize canvas{gif->SWidth > 0 ? gif->SWidth : frame.Width,
                         gif->SHeight > 0 ? gif->SHeight : frame.Height};
  const ColorMapObject* map = frame.ColorMap != nullptr ? frame.ColorMap : gif->SColorMap;
  if (map == nullptr || !sink.begin(canvas, {}, {})) return false;
  const auto indices = readFrame(gif.get());
  if (!indices) return false;

  const auto colors = readColors(*map, transparentIndex);
  std::vector<Color> row(static_cast<std::size_t>(canvas.width));
  const int visibleEnd = std::min(canvas.width, frame.Left + frame.Width);
  for (int y = 0; y < canvas.height; ++y) {
    std::ranges::fill(row, Color{});
    const int frameY = y - frame.Top;
    if (frameY >= 0 && frameY < frame.Height) {
      const auto start = static_cast<std::size_t>(frameY) * static_cast<std::size_t>(frame.Width);
      for (int x = frame.Left; x < visibleEnd; ++x) {
        row[static_cast<std::size_t>(x)] =
            colors[(*indices)[start + static_cast<std::size_t>(x - frame.Left)]];
      }
    }
    sink.addRow(row.front().data());
  }
  return true;
}

}  // namespace QXPlatform
