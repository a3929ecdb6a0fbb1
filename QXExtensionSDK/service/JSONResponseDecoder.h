#pragma once

#include <concepts>
#include <memory>

#include "QXExtensionSDK/service/ResponseDecoder.h"
#include "QXPlatform/foundation/JSONCoding.h"

namespace QXExtensionSDK {

// Decodes JSON into the given kind of answer. Keys that it does not know are ignored.
template <std::derived_from<DeliveryReceiptResponse> Decoded>
class JSONResponseDecoder final : public ResponseDecoder {
 public:
  QXPlatform::Result<Response> decode(const QXPlatform::Data& data) const override {
    auto decoded = QXPlatform::decodeJSON<Decoded>(data.view());
    if (!decoded) return QXPlatform::Error{decoded.error().description()};
    return Response(std::make_shared<const Decoded>(*std::move(decoded)));
  }
};

}  // namespace QXExtensionSDK
