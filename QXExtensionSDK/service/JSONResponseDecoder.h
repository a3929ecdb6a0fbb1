#pragma once

#include <concepts>
#include <cstddef>
#include <memory>

#include "QXExtensionSDK/service/ResponseDecoder.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/JSONCoding.h"

namespace QXExtensionSDK {

// Decodes JSON into the given kind of answer. Keys that it does not know are ignored.
template <std::derived_from<DeliveryReceiptResponse> Decoded>
class JSONResponseDecoder final : public ResponseDecoder {
 public:
  QXPlatform::Result<Response> decode(const QXPlatform::Data& data) const override {
    // Both modules' answers may be there at once, in a process that is to stay small.
    constexpr QXPlatform::JSONLimits kLimits{.treeBytes = std::size_t{2} << 20};
    const auto value = QXPlatform::parseJSON(data.view(), kLimits);
    if (!value) return QXPlatform::Error{"not JSON: " + value.error().message};
    auto decoded = QXPlatform::decodeValue<Decoded>(*value);
    if (!decoded) return QXPlatform::Error{decoded.error().description()};
    return Response(std::make_shared<const Decoded>(*std::move(decoded)));
  }
};

}  // namespace QXExtensionSDK
