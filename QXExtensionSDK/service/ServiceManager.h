#pragma once

#include <functional>
#include <memory>

#include "QXExtensionSDK/service/NetworkExecutor.h"
#include "QXExtensionSDK/service/RequestBuilder.h"
#include "QXExtensionSDK/service/ResponseDecoder.h"

namespace QXExtensionSDK {

// Sends one JSON request and hands back one decoded answer. Nothing is kept between requests and nothing is
// tried again. Any thread; several sends may be in flight at once.
class ServiceManager {
 public:
  using Answer = QXPlatform::Result<ResponseDecoder::Response, SendError>;
  using Completion = std::function<void(const Answer&)>;

  ServiceManager(std::unique_ptr<const RequestBuilder> requestBuilder,
                 std::shared_ptr<const ResponseDecoder> responseDecoder,
                 std::unique_ptr<NetworkExecutor> networkExecutor);

  // Returns when the request is on its way. The completion is called at most once: on a background queue, or
  // right away when the request cannot be built. It may come after this object is gone, and does not come at
  // all for an answer that is no HTTP answer. What happened is logged after it returns.
  void send(const ServiceProtocol& service, Completion completion) const;

 private:
  std::unique_ptr<const RequestBuilder> requestBuilder_;
  std::shared_ptr<const ResponseDecoder> responseDecoder_;
  std::unique_ptr<NetworkExecutor> networkExecutor_;
};

}  // namespace QXExtensionSDK
