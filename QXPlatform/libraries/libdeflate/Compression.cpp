#include "QXPlatform/compression/Compression.h"

#include <libdeflate.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <utility>

#include "QXPlatform/foundation/Handle.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXPlatform {
namespace {

using Decompressor = Handle<libdeflate_decompressor, &libdeflate_free_decompressor>;

// To make one takes longer than to inflate a usual payload. So a few are kept for whoever comes next; they
// hold tables and no data.
class Decompressors {
 public:
  static Decompressors& shared() {
    static NeverDestroyed<Decompressors> decompressors;
    return *decompressors;
  }

  Decompressor take() {
    for (std::size_t i = 0; i < kPlaces; ++i) {
      auto& kept = placeAfterOwn(i).kept;
      if (kept.load(std::memory_order_relaxed) == nullptr) continue;
      if (auto* const taken = kept.exchange(nullptr)) return Decompressor(taken);
    }
    return Decompressor(libdeflate_alloc_decompressor());
  }

  void keep(Decompressor decompressor) {
    for (std::size_t i = 0; i < kPlaces; ++i) {
      libdeflate_decompressor* none = nullptr;
      if (!placeAfterOwn(i).kept.compare_exchange_strong(none, decompressor.get())) continue;
      (void)decompressor.release();
      return;
    }
  }

 private:
  friend class NeverDestroyed<Decompressors>;
  Decompressors() = default;

  static constexpr std::size_t kPlaces = 4;
  static constexpr std::size_t kCacheLine = 64;
  struct alignas(kCacheLine) Place {
    std::atomic<libdeflate_decompressor*> kept = nullptr;
  };

  // Each thread comes back to the same place: what another processor has written is slow to write anew.
  Place& placeAfterOwn(std::size_t distance) {
    static std::atomic<std::size_t> threads = 0;
    thread_local const std::size_t own = threads++;
    return places_[(own + distance) % kPlaces];
  }

  std::array<Place, kPlaces> places_;
};

std::size_t inflate(std::span<std::byte> destination, std::span<const std::byte> source) {
  Decompressor decompressor = Decompressors::shared().take();
  if (decompressor == nullptr) return 0;
  std::size_t written = 0;
  const libdeflate_result result = libdeflate_deflate_decompress(
      decompressor.get(), source.data(), source.size(), destination.data(), destination.size(), &written);
  Decompressors::shared().keep(std::move(decompressor));
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
