#pragma once

#include <zlib.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace support {

// Raw deflate by zlib: another implementation than the one under test.
inline std::string deflateRaw(std::string_view text) {
  z_stream stream{};
  if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
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

}  // namespace support
