#include <cstddef>
#include <cstdint>
#include <string_view>

#include "QXExtensionSDK/receipts/MAMEventResponse.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXExtensionSDK/service/JSONResponseDecoder.h"
#include "QXPlatform/foundation/FatalError.h"

namespace {

using namespace QXExtensionSDK;

template <typename Response>
bool decodes(const QXPlatform::Data& body) {
  const auto answer = JSONResponseDecoder<Response>().decode(body);
  if (answer && (*answer)->description().empty()) QXPlatform::fatalError("An answer without a description");
  return static_cast<bool>(answer);
}

}  // namespace

// The body of a back end's answer. What one module's says beside the other's never makes it a bad one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Logger::setGlobalLoglevel(4);
  const QXPlatform::Data body(std::string(reinterpret_cast<const char*>(data), size));
  if (decodes<DeliveryReceiptResponse>(body) != decodes<MAMEventResponse>(body)) {
    QXPlatform::fatalError("Good for one module only");
  }
  return 0;
}
