#include "QXPlatform/compression/Compression.h"

#include <libdeflate.h>

#include "QXPlatform/foundation/Handle.h"

namespace QXPlatform {
namespace {

using Decompressor = Handle<libdeflate_decompressor, &libdeflate_free_decompressor>;

std::size_t inflate(std::span<std::byte> destination, std::span<const std::byte> source) {
  const Decompressor decompressor(libdeflate_alloc_decompressor());
  if (decompressor == nullptr) return 0;
  std::size_t written = 0;
  const libdeflate_result result = libdeflate_deflate_decompress(
      decompressor.get(), source.data(), source.size(), destination.data(), destination.size(), &written);
  if (result == LIBDEFLATE_SUCCESS) return written;
  return result == LIBDEFLATE_INSUFFICIENT_SPACE ? destination.size() : 0;
}

}  // namespace

std::size_t compression_decode_buffer(std::span<std::byte> destination, std::span<const std::byte> source,
                                      CompressionAlgorithm algorithm) {
  if (source.empty() || destination.empty()) return 0;
  return algorithm == CompressionAlgorithm::zlib ? inflate(destination, source) : 0;
}

}  // namespace QXPlatform
