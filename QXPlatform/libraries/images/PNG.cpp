#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "QXPlatform/images/ImageDecoder.h"
#include "QXPlatform/libraries/images/Codecs.h"

namespace QXPlatform {

namespace {

// Chunks that no pixel needs; some would be unpacked and kept.
constexpr png_byte kUnwantedChunks[] =
    "tEXt\0zTXt\0iTXt\0sPLT\0hIST\0tIME\0pCAL\0sCAL\0oFFs\0pHYs\0sBIT\0bKGD";
constexpr int kUnwantedChunkCount = sizeof kUnwantedChunks / 5;

// Errors leave the library by longjmp(): what is between setjmp() and the library's calls has no destructor.
class PNGDecoder {
 public:
  PNGDecoder(std::string_view bytes, ImageSink& sink)
      : rest_(bytes),
        sink_(sink),
        png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, failed, ignored)),
        info_(png_ == nullptr ? nullptr : png_create_info_struct(png_)) {}
  ~PNGDecoder() { png_destroy_read_struct(&png_, &info_, nullptr); }
  PNGDecoder(const PNGDecoder&) = delete;
  PNGDecoder& operator=(const PNGDecoder&) = delete;

  bool decode() { return info_ != nullptr && readHeader() && begin() && readRows(); }

 private:
  [[noreturn]] static void failed(png_structp png, png_const_charp /*message*/) { png_longjmp(png, 1); }
  static void ignored(png_structp /*png*/, png_const_charp /*message*/) {}
  static void read(png_structp png, png_bytep target, std::size_t count) {
    auto& rest = static_cast<PNGDecoder*>(png_get_io_ptr(png))->rest_;
    if (count > rest.size()) png_error(png, "ends early");
    std::memcpy(target, rest.data(), count);
    rest.remove_prefix(count);
  }

  bool readHeader() {
    constexpr png_alloc_size_t kMostChunkBytes = 4'000'000;
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_set_read_fn(png_, this, read);
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, kUnwantedChunks, kUnwantedChunkCount);
    png_set_chunk_malloc_max(png_, kMostChunkBytes);
    // A wrong sum makes no pixel missing.
    png_set_crc_action(png_, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
    png_set_option(png_, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
    png_read_info(png_, info_);
    png_set_expand(png_);
    png_set_scale_16(png_);
    png_set_gray_to_rgb(png_);
    png_set_add_alpha(png_, 0xFF, PNG_FILLER_AFTER);
    passes_ = png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    return true;
  }

  bool begin() {
    const auto width = png_get_image_width(png_, info_);
    const auto height = png_get_image_height(png_, info_);
    const PixelSize size{static_cast<int>(width), static_cast<int>(height)};
    if (!sink_.begin(size, orientation(), color())) return false;
    rowBytes_ = std::size_t{width} * 4;
    // Of an interlaced image every pass touches all rows.
    const std::size_t kept = rowBytes_ * (passes_ > 1 ? height : 1);
    if (kept > std::size_t{kMostDecodingBytes}) return false;
    rows_.resize(kept);
    return true;
  }

  Orientation orientation() const {
    png_uint_32 length = 0;
    png_bytep exif = nullptr;
    if (png_get_eXIf_1(png_, info_, &length, &exif) == 0) return {};
    return orientationOfExif({reinterpret_cast<const char*>(exif), length});
  }

  ColorDescription color() const {
    ColorDescription color;
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 length = 0;
    if (png_get_iCCP(png_, info_, &name, &compression, &profile, &length) != 0) {
      color.iccProfile.assign(reinterpret_cast<const char*>(profile), length);
    }
    if (png_get_valid(png_, info_, PNG_INFO_sRGB) != 0) return color;
    double fileGamma = 0;
    if (png_get_gAMA(png_, info_, &fileGamma) != 0 && fileGamma > 0) color.gamma = 1 / fileGamma;
    Chromaticities points;
    if (png_get_cHRM(png_, info_, &points.white.x, &points.white.y, &points.red.x, &points.red.y,
                     &points.green.x, &points.green.y, &points.blue.x, &points.blue.y) != 0) {
      color.chromaticities = points;
    }
    return color;
  }

  bool readRows() {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    const auto height = static_cast<std::size_t>(sink_.size().height);
    for (int pass = 0; pass < passes_; ++pass) {
      const bool isLast = pass == passes_ - 1;
      for (std::size_t y = 0; y < height; ++y) {
        png_bytep row = rows_.data() + (passes_ > 1 ? y * rowBytes_ : 0);
        png_read_row(png_, row, nullptr);
        if (isLast) sink_.addRow(row);
      }
    }
    return true;
  }

  std::string_view rest_;
  ImageSink& sink_;
  png_structp png_;
  png_infop info_;
  int passes_ = 1;
  std::size_t rowBytes_ = 0;
  std::vector<std::uint8_t> rows_;
};

}  // namespace

bool decodePNG(std::string_view bytes, ImageSink& sink) {
  return PNGDecoder(bytes, sink).decode();
}

}  // namespace QXPlatform
