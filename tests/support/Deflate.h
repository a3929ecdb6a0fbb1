#pragma once

#include <zlib.h>

#include "QXPlatform/foundation/Base64.h"
#include "tests/support/Test.h"

namespace support {

// Packed by zlib, another implementation than the one under test: raw, or as the window bits say.
inline std::string deflateRaw(std::string_view text, int windowBits = -MAX_WBITS) {
  z_stream stream{};
  if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::runtime_error("deflateInit2");
  }
  std::string compressed(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
  stream.avail_out = static_cast<uInt>(compressed.size());
  deflate(&stream, Z_FINISH);
  compressed.resize(stream.total_out);
  deflateEnd(&stream);
  return compressed;
}

inline std::string gzipped(std::string_view text) {
  return deflateRaw(text, MAX_WBITS + 16);
}

// As the field of a push that holds compressed rich features.
inline std::string packed(std::string_view text) {
  return QXPlatform::encodeBase64(deflateRaw(text));
}

}  // namespace support
