#include "tools/qx/CompressedRichFeatures.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "QXExtensionSDK/decoration/DecompressStrategy.h"
#include "QXPlatform/compression/Compression.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/JSON.h"
#include "tools/qx/RawDeflate.h"

namespace qx {

namespace {

using QXExtensionSDK::kDeflateBufferCapacity;
using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

std::string mostThatIsInflated() {
  return "the " + std::to_string(kDeflateBufferCapacity - 1) + " that a device inflates";
}

// REQUIRES: the framework has refused the text.
std::string whyNotInflated(std::string_view text) {
  const auto compressed = QXPlatform::decodeBase64(text);
  if (!compressed) return "not base64 of the standard alphabet, padded and without line breaks";
  std::vector<std::byte> buffer(kDeflateBufferCapacity);
  const std::size_t count = QXPlatform::compression_decode_buffer(buffer, compressed->bytes(),
                                                                  QXPlatform::CompressionAlgorithm::zlib);
  if (count == buffer.size()) return "inflates to more bytes than " + mostThatIsInflated();
  return count == 0 ? "not raw deflate data, or cut off" : "inflates to what is no UTF-8";
}

}  // namespace

Result<std::string> compressRichFeatures(const Dictionary& richFeatures) {
  const auto text = QXPlatform::writeJSON(richFeatures, QXPlatform::JSONStyle::compact);
  if (!text) return text.error();
  if (text->size() >= kDeflateBufferCapacity) {
    return Error{std::to_string(text->size()) + " bytes of JSON, more than " + mostThatIsInflated()};
  }
  return QXPlatform::encodeBase64(deflateRaw(*text));
}

Result<Dictionary> inflateRichFeatures(const QXPlatform::Value& field) {
  using namespace QXExtensionSDK;
  const auto compressed = field.string();
  if (!compressed) return Error{"not text"};
  if (compressed->empty()) return Error{"empty"};
  const DeflateDecompressStrategy strategy(Logger::service(),
                                           std::make_unique<DefaultDeflateBufferCapacityProvider>());
  const auto text = strategy.decompress(*compressed);
  if (!text) return Error{whyNotInflated(*compressed)};
  const auto value = QXPlatform::parseJSON(*text);
  if (!value) return Error{"inflates to what is no JSON: " + value.error().message};
  const auto richFeatures = value->dictionary();
  if (!richFeatures) return Error{"inflates to JSON that is no object"};
  return *richFeatures;
}

}  // namespace qx
