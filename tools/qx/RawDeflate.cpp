#include "tools/qx/RawDeflate.h"

#include <libdeflate.h>

#include <new>

#include "QXPlatform/foundation/Handle.h"

namespace qx {

namespace {

constexpr int kBestCompression = 12;

using Compressor = QXPlatform::Handle<libdeflate_compressor, &libdeflate_free_compressor>;

}  // namespace

std::string deflateRaw(std::string_view text) {
  const Compressor compressor(libdeflate_alloc_compressor(kBestCompression));
  if (compressor == nullptr) throw std::bad_alloc();
  std::string compressed(libdeflate_deflate_compress_bound(compressor.get(), text.size()), '\0');
  compressed.resize(libdeflate_deflate_compress(compressor.get(), text.data(), text.size(), compressed.data(),
                                                compressed.size()));
  return compressed;
}

}  // namespace qx
