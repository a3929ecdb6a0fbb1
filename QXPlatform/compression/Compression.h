#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace QXPlatform {

enum class CompressionAlgorithm : int {
  zlib = 0x205,  // raw deflate, RFC 1951: no header, no checksum
};

// Inflates a whole buffer. Returns the number of bytes written: the capacity of `destination` when the output
// is cut off there (its last part is then unspecified), 0 when the source is bad or ends too early. Bytes
// after the end of the stream are ignored. Any thread.
std::size_t compression_decode_buffer(std::span<std::byte> destination, std::span<const std::byte> source,
                                      CompressionAlgorithm algorithm);

}  // namespace QXPlatform
