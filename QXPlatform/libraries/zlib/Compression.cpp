#include "QXPlatform/compression/Compression.h"

#include <zlib.h>

#include <limits>

namespace QXPlatform {
namespace {

// Whether a stream whose output has filled its buffer would go on.
bool hasMore(z_stream& stream) {
  Bytef surplus = 0;
  stream.next_out = &surplus;
  stream.avail_out = 1;
  return inflate(&stream, Z_FINISH) != Z_DATA_ERROR && stream.avail_out == 0;
}

std::size_t inflateInto(std::span<std::byte> destination, std::span<const std::byte> source) {
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) return 0;
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(source.data()));
  stream.avail_in = static_cast<uInt>(source.size());
  stream.next_out = reinterpret_cast<Bytef*>(destination.data());
  stream.avail_out = static_cast<uInt>(destination.size());
  const int status = inflate(&stream, Z_FINISH);
  std::size_t written = 0;
  if (status == Z_STREAM_END) {
    written = destination.size() - stream.avail_out;
  } else if (stream.avail_out == 0 && hasMore(stream)) {
    written = destination.size();
  }
  inflateEnd(&stream);
  return written;
}

}  // namespace

std::size_t compression_decode_buffer(std::span<std::byte> destination, std::span<const std::byte> source,
                                      CompressionAlgorithm algorithm) {
  constexpr std::size_t kLargest = std::numeric_limits<uInt>::max();
  if (source.empty() || destination.empty()) return 0;
  if (source.size() > kLargest || destination.size() > kLargest) return 0;
  return algorithm == CompressionAlgorithm::zlib ? inflateInto(destination, source) : 0;
}

}  // namespace QXPlatform
