#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

// One way to decompress text. Any thread.
class DecompressStrategy {
 public:
  virtual ~DecompressStrategy() = default;
  virtual std::optional<std::string> decompress(std::string_view text) const = 0;
};

// The size of the buffer that a payload is inflated into.
inline constexpr std::size_t kDeflateBufferCapacity = 65536;

// Names that size to whoever asks; the strategy keeps to it whatever a provider says.
class DeflateBufferCapacityProvider {
 public:
  virtual ~DeflateBufferCapacityProvider() = default;
  virtual std::size_t capacity() const = 0;
};

class DefaultDeflateBufferCapacityProvider final : public DeflateBufferCapacityProvider {
 public:
  std::size_t capacity() const override { return kDeflateBufferCapacity; }
};

// Base64 text of raw-deflate data to UTF-8 text. What inflates to the capacity or more is refused: the buffer
// is of fixed size and never grows, so a hostile payload costs no more than a good one.
class DeflateDecompressStrategy final : public DecompressStrategy {
 public:
  DeflateDecompressStrategy(const Logger& logger,
                            std::unique_ptr<const DeflateBufferCapacityProvider> capacityProvider);

  std::optional<std::string> decompress(std::string_view text) const override;

 private:
  const Logger& logger_;
  const std::unique_ptr<const DeflateBufferCapacityProvider> capacityProvider_;
};

}  // namespace QXExtensionSDK
