#include "QXPlatform/images/ImageFormat.h"

namespace QXPlatform {

ImageFormat imageFormatOf(std::string_view bytes) {
  const auto hasAt = [bytes](std::size_t position, std::string_view text) {
    return bytes.size() >= position + text.size() && bytes.substr(position, text.size()) == text;
  };
  if (hasAt(0, "\x89PNG\r\n\x1a\n")) return ImageFormat::png;
  if (hasAt(0, "\xff\xd8\xff")) return ImageFormat::jpeg;
  if (hasAt(0, "GIF87a") || hasAt(0, "GIF89a")) return ImageFormat::gif;
  if (hasAt(0, "RIFF") && hasAt(8, "WEBP")) return ImageFormat::webp;
  if (hasAt(0, "BM")) return ImageFormat::bmp;
  if (hasAt(4, "ftypavif") || hasAt(4, "ftypavis") || hasAt(4, "ftypmif1")) return ImageFormat::avif;
  return ImageFormat::none;
}

}  // namespace QXPlatform
