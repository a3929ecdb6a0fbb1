#include <algorithm>
#include <array>
#include <bit>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

// After the standard headers that it needs.
#include <jerror.h>
#include <jpeglib.h>

#include "QXPlatform/images/ImageDecoder.h"
#include "QXPlatform/libraries/images/Codecs.h"

namespace QXPlatform {

namespace {

constexpr std::string_view kExifPrefix("Exif\0\0", 6);
constexpr std::string_view kProfilePrefix("ICC_PROFILE\0", 12);

// Errors leave the library by longjmp(): what is between setjmp() and the library's calls has no destructor.
class JPEGDecoder {
 public:
  JPEGDecoder(std::string_view bytes, ImageSink& sink) : sink_(sink), length_(bytes.size()) {
    info_.err = jpeg_std_error(&errors_);
    errors_.error_exit = [](j_common_ptr info) { std::longjmp(self(info).failed_, 1); };
    errors_.emit_message = [](j_common_ptr info, int level) { self(info).warned(level); };
    info_.client_data = this;
    source_.next_input_byte = reinterpret_cast<const JOCTET*>(bytes.data());
    source_.bytes_in_buffer = bytes.size();
    source_.init_source = [](j_decompress_ptr) {};
    source_.fill_input_buffer = [](j_decompress_ptr info) { return self(info).endInput(); };
    source_.skip_input_data = [](j_decompress_ptr info, long count) { self(info).skip(count); };
    source_.resync_to_restart = jpeg_resync_to_restart;
    source_.term_source = [](j_decompress_ptr) {};
  }
  ~JPEGDecoder() { jpeg_destroy_decompress(&info_); }
  JPEGDecoder(const JPEGDecoder&) = delete;
  JPEGDecoder& operator=(const JPEGDecoder&) = delete;

  bool decode() { return readHeader() && begin() && readRows() && isWhole(); }

  // Some writers leave restart markers where none belong, at which the library stops: the image without them.
  // Nothing when that is not what decode() failed for.
  std::optional<std::string> withoutStrayRestarts(std::string_view bytes) const {
    if (!isRestartStray_) return std::nullopt;
    std::string rest(bytes.substr(0, scanStart_));
    for (std::size_t i = scanStart_; i < bytes.size(); ++i) {
      const bool isRestart = bytes[i] == '\xFF' && i + 1 < bytes.size() &&
                             isRestartMarker(static_cast<unsigned char>(bytes[i + 1]));
      if (isRestart) {
        ++i;
      } else {
        rest += bytes[i];
      }
    }
    return rest;
  }

 private:
  template <typename Info>
  static JPEGDecoder& self(Info info) {
    return *static_cast<JPEGDecoder*>(info->client_data);
  }

  // Decoders fill what is missing with grey, which nobody should be shown.
  void warned(int level) {
    if (level >= 0 || errors_.msg_code != JWRN_HIT_MARKER) return;
    arePixelsMissing_ = true;
    isRestartStray_ = info_.restart_interval == 0 && isRestartMarker(info_.unread_marker);
  }

  static bool isRestartMarker(int marker) { return marker >= JPEG_RST0 && marker <= JPEG_RST0 + 7; }

  boolean endInput() {
    static constexpr std::array<JOCTET, 2> kEndOfImage{0xFF, JPEG_EOI};
    isEndMissing_ = true;
    source_.next_input_byte = kEndOfImage.data();
    source_.bytes_in_buffer = kEndOfImage.size();
    return TRUE;
  }

  void skip(long count) {
    const auto length = std::min(source_.bytes_in_buffer, static_cast<std::size_t>(std::max(count, 0L)));
    source_.next_input_byte += length;
    source_.bytes_in_buffer -= length;
  }

  // The library would keep every segment there is, in a list that it walks for each one more.
  boolean readSegment() {
    const std::string_view rest(reinterpret_cast<const char*>(source_.next_input_byte),
                                source_.bytes_in_buffer);
    const auto byteAt = [rest](std::size_t i) { return std::size_t{static_cast<unsigned char>(rest[i])}; };
    const std::size_t length = rest.size() < 2 ? 0 : byteAt(0) << 8 | byteAt(1);
    if (length < 2 || length > rest.size()) {
      source_.bytes_in_buffer = 0;
      return TRUE;
    }
    keep(rest.substr(2, length - 2));
    skip(static_cast<long>(length));
    return TRUE;
  }

  void keep(std::string_view segment) {
    if (exif_.empty() && segment.starts_with(kExifPrefix)) exif_ = segment.substr(kExifPrefix.size());
    const std::size_t headLength = kProfilePrefix.size() + 2;  // number and count of the part
    if (!segment.starts_with(kProfilePrefix) || segment.size() <= headLength) return;
    const auto number = static_cast<unsigned char>(segment[kProfilePrefix.size()]);
    profileParts_[number] = segment.substr(headLength);
  }

  bool readHeader() {
    if (setjmp(failed_) != 0) return false;
    jpeg_create_decompress(&info_);
    // The library would count its line buffers, whose size depends on that of the place.
    info_.mem->max_memory_to_use = 0;
    info_.src = &source_;
    const auto readSegment = [](j_decompress_ptr info) { return self(info).readSegment(); };
    jpeg_set_marker_processor(&info_, JPEG_APP0 + 1, readSegment);
    jpeg_set_marker_processor(&info_, JPEG_APP0 + 2, readSegment);
    jpeg_read_header(&info_, TRUE);
    scanStart_ = length_ - source_.bytes_in_buffer;
    // No browser knows arithmetic coding, which has no way to tell that pixels are missing.
    return info_.arith_code == FALSE && coefficientBytes() <= kMostDecodingBytes;
  }

  // What is kept until the last scan of several.
  long coefficientBytes() {
    if (jpeg_has_multiple_scans(&info_) == FALSE) return 0;
    long blocks = 0;
    for (const auto& component : std::span(info_.comp_info, static_cast<std::size_t>(info_.num_components))) {
      blocks += long{component.width_in_blocks} * component.height_in_blocks;
    }
    return blocks * static_cast<long>(sizeof(JBLOCK));
  }

  bool begin() {
    const bool hasInks = info_.num_components == 4;
    ColorDescription color;
    color.isOpaque = true;
    for (const std::string_view part : profileParts_) color.iccProfile += part;
    if (hasInks) color.model = ColorDescription::Model::invertedCMYK;
    const PixelSize size{static_cast<int>(info_.image_width), static_cast<int>(info_.image_height)};
    if (!sink_.begin(size, orientationOfExif(exif_), std::move(color))) return false;
    const int reduction = sink_.reduction();
    sink_.reduce(reduction);
    info_.scale_num = 1;
    info_.scale_denom = static_cast<unsigned>(reduction);
    info_.out_color_space = hasInks ? JCS_CMYK : JCS_EXT_RGBA;
    row_.resize(static_cast<std::size_t>(sink_.size().width) * 4 + kPassingCache);
    return true;
  }

  // The library writes a row that is aligned like that past the cache, from where it would have to come back
  // for the sink: a third of the time.
  JSAMPROW cachedRow() {
    const bool passesCache = std::bit_cast<std::uintptr_t>(row_.data()) % kPassingCache == 0;
    return row_.data() + (passesCache ? kPassingCache / 2 : 0);
  }

  bool readRows() {
    if (setjmp(failed_) != 0) return false;
    jpeg_start_decompress(&info_);
    JSAMPROW row = cachedRow();
    while (info_.output_scanline < info_.output_height && !arePixelsMissing_) {
      jpeg_read_scanlines(&info_, &row, 1);
      sink_.addRow(row);
    }
    return true;
  }

  // Without an end the scans that were read tell whether there were to be more.
  bool isWhole() const {
    if (arePixelsMissing_) return false;
    if (!isEndMissing_) return true;
    return info_.progressive_mode != FALSE ? isEveryBitKnown() : isEveryComponentKnown();
  }

  // A component gets its table with its scan.
  bool isEveryComponentKnown() const {
    return std::ranges::all_of(std::span(info_.comp_info, static_cast<std::size_t>(info_.num_components)),
                               [](const auto& component) { return component.quant_table != nullptr; });
  }

  bool isEveryBitKnown() const {
    if (info_.coef_bits == nullptr) return false;
    for (int component = 0; component < info_.num_components; ++component) {
      for (const int missingBits : std::span(info_.coef_bits[component])) {
        if (missingBits != 0) return false;
      }
    }
    return true;
  }

  static constexpr std::size_t kPassingCache = 32;

  ImageSink& sink_;
  const std::size_t length_;
  std::size_t scanStart_ = 0;
  jpeg_decompress_struct info_{};
  jpeg_error_mgr errors_{};
  jpeg_source_mgr source_{};
  std::jmp_buf failed_{};
  std::string_view exif_;
  std::array<std::string_view, 256> profileParts_{};
  std::vector<std::uint8_t> row_;
  bool isEndMissing_ = false;
  bool arePixelsMissing_ = false;
  bool isRestartStray_ = false;
};

}  // namespace

bool decodeJPEG(std::string_view bytes, ImageSink& sink) {
  JPEGDecoder decoder(bytes, sink);
  if (decoder.decode()) return true;
  const auto cleaned = decoder.withoutStrayRestarts(bytes);
  return cleaned && JPEGDecoder(*cleaned, sink).decode();
}

}  // namespace QXPlatform
