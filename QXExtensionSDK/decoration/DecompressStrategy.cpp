#include "QXExtensionSDK/decoration/DecompressStrategy.h"

#include <array>
#include <span>
#include <utility>

#include "QXPlatform/compression/Compression.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/UTF8.h"

namespace QXExtensionSDK {

namespace {

// The destination buffer of one payload; says when it goes. On the stack, since the allocator would clean up
// after each piece of that size.
class InflateBuffer {
 public:
  explicit InflateBuffer(const Logger& logger) : logger_(logger) {}
  ~InflateBuffer() { logger_.debug(LogCategory::decompression, "Deflate: Deallocating destination buffer"); }
  InflateBuffer(const InflateBuffer&) = delete;
  InflateBuffer& operator=(const InflateBuffer&) = delete;

  std::span<std::byte> bytes() { return bytes_; }
  std::string_view text(std::size_t count) const {
    return {reinterpret_cast<const char*>(bytes_.data()), count};
  }

 private:
  std::array<std::byte, kDeflateBufferCapacity> bytes_;  // on purpose not filled
  const Logger& logger_;
};

struct Inflated {
  std::size_t count = 0;
  std::optional<std::string> text;
};

Inflated inflate(const QXPlatform::Data& compressed, InflateBuffer& buffer, const Logger& logger) {
  if (compressed.empty()) {
    logger.error(LogCategory::decompression, "Deflate: Typed pointer base address nil");
    return {};
  }
  const std::size_t count = QXPlatform::compression_decode_buffer(buffer.bytes(), compressed.bytes(),
                                                                  QXPlatform::CompressionAlgorithm::zlib);
  logger.debug(LogCategory::decompression, "Deflate: Decoded char count=", count);
  if (count == 0) {
    logger.error(LogCategory::decompression, "Deflate: Returning nil as decoded char count is zero");
    return {};
  }
  const std::string_view text = buffer.text(count);
  // A full buffer is refused by the caller, so its text is not worth a copy.
  const bool usable = count < buffer.bytes().size() && QXPlatform::isValidUTF8(text);
  return {count, usable ? std::optional(std::string(text)) : std::nullopt};
}

}  // namespace

DeflateDecompressStrategy::DeflateDecompressStrategy(
    const Logger& logger, std::unique_ptr<const DeflateBufferCapacityProvider> capacityProvider)
    : logger_(logger), capacityProvider_(std::move(capacityProvider)) {}

std::optional<std::string> DeflateDecompressStrategy::decompress(std::string_view text) const {
  logger_.debug(LogCategory::decompression, "Deflate: Decompression start");
  const auto compressed = QXPlatform::decodeBase64(text);
  if (!compressed) {
    logger_.error(LogCategory::decompression, "Deflate: Base64 decoding failed");
    return std::nullopt;
  }
  InflateBuffer buffer(logger_);
  const auto inflated = inflate(*compressed, buffer, logger_);
  if (inflated.count == buffer.bytes().size()) {
    logger_.error(LogCategory::decompression, "Deflate: Possible buffer overflow while decompressing");
    return std::nullopt;
  }
  logger_.debug(LogCategory::decompression, "Deflate: Decompression success");
  return inflated.text;
}

}  // namespace QXExtensionSDK
