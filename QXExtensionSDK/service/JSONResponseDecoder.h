#pragma once

#include <concepts>
#include <memory>

#include "QXExtensionSDK/service/ResponseDecoder.h"
#include "platform/foundation/JSONCoding.h"

namespace QXExtensionSDK {

// Decodes JSON into the given kind of answer. Keys that it does not know are ignored.
template <std::derived_from<DeliveryReceiptResponse> Decoded>
class JSONResponseDecoder final : public ResponseDecoder {
 public:
  platform::Result<Response> decode(const platform::Data& data) const override {
    auto decoded = platform::decodeJSON<Decoded>(data.view());
    if (!decoded) return platform::Error{decoded.error().description()};
    return Response(std::make_shared<const Decoded>(*std::move(decoded)));
  }
};

}  // namespace QXExtensionSDK
