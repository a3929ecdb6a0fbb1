#include "tools/qx/RawDeflate.h"

#include <libdeflate.h>

#include <memory>
#include <new>

namespace qx {

namespace {

constexpr int kBestCompression = 12;

struct FreeCompressor {
  void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};

}  // namespace

std::string deflateRaw(std::string_view text) {
  const std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor(
      libdeflate_alloc_compressor(kBestCompression));
  if (compressor == nullptr) throw std::bad_alloc();
  std::string compressed(libdeflate_deflate_compress_bound(compressor.get(), text.size()), '\0');
  compressed.resize(libdeflate_deflate_compress(compressor.get(), text.data(), text.size(), compressed.data(),
                                                compressed.size()));
  return compressed;
}

}  // namespace qx
