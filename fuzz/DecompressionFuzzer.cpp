#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "QXExtensionSDK/decoration/DecompressionDecorator.h"
#include "QXExtensionSDK/payload/PayloadKeys.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace {

using namespace QXExtensionSDK;
using QXPlatform::Dictionary;
using QXPlatform::fatalError;

void decorate(const std::string& compressed) {
  const DecompressionDecorator decorator(
      Logger::service(), std::make_unique<const ConcreteDecompressionContext>(Logger::service()));
  const auto changes = decorator.decorate(Dictionary{{kCompressedRichFeaturesKey, compressed}},
                                          {.identifier = "", .content = nullptr});
  if (!changes) return;
  if (changes->size() != 2 || (*changes)[kCompressedRichFeaturesKey].string() != "") {
    fatalError("The compressed field stays");
  }
  const auto richFeatures = (*changes)[kRichFeaturesKey].dictionary();
  if (!richFeatures) fatalError("Rich features that are no dictionary");
  if (!QXPlatform::writeJSON(*richFeatures, QXPlatform::JSONStyle::compact))
    fatalError("Refused to write what was read");
}

// The bytes as they are, in deflate's stored form.
std::string stored(std::string_view bytes) {
  bytes = bytes.substr(0, 0xFFFF);
  std::string block{'\1'};
  for (const std::size_t number : {bytes.size(), ~bytes.size()}) {
    block += static_cast<char>(number & 0xFF);
    block += static_cast<char>(number >> 8 & 0xFF);
  }
  return block.append(bytes);
}

}  // namespace

// A compressed payload comes as any text, as any bytes in base64, or inflates to any bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Logger::setGlobalLoglevel(4);
  const std::string input(reinterpret_cast<const char*>(data), size);
  decorate(input);
  decorate(QXPlatform::encodeBase64(input));
  decorate(QXPlatform::encodeBase64(stored(input)));
  return 0;
}
