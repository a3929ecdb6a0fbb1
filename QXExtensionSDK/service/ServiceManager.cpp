#include "QXExtensionSDK/service/ServiceManager.h"

#include <string_view>
#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

namespace {

void fail(const ServiceManager::Completion& completion, const SendError& error, std::string_view stage) {
  completion(error);
  Logger::service().error(LogCategory::network, "ServiceManager ", stage, " error ", error);
}

void finish(const ResponseDecoder& decoder, const QXPlatform::Data& data,
            const ServiceManager::Completion& completion) {
  auto decoded = decoder.decode(data);
  if (!decoded) {
    return fail(completion, ServiceError(ServiceError::DecodingError{decoded.error()}), "ResponseDecoder");
  }
  const auto response = *std::move(decoded);
  completion(response);
  Logger::service().debug(LogCategory::network, "ServiceManager success ", *response);
}

}  // namespace

ServiceManager::ServiceManager(std::unique_ptr<const RequestBuilder> requestBuilder,
                               std::shared_ptr<const ResponseDecoder> responseDecoder,
                               std::unique_ptr<NetworkExecutor> networkExecutor)
    : requestBuilder_(std::move(requestBuilder)),
      responseDecoder_(std::move(responseDecoder)),
      networkExecutor_(std::move(networkExecutor)) {}

void ServiceManager::send(const ServiceProtocol& service, Completion completion) const {
  auto request = requestBuilder_->build(service);
  if (!request) return fail(completion, request.error(), "RequestBuilder");
  networkExecutor_->execute(*std::move(request),
                            [decoder = responseDecoder_, completion = std::move(completion)](
                                const QXPlatform::Result<QXPlatform::Data, SendError>& answer) {
                              if (!answer) return fail(completion, answer.error(), "NetworkExecutor");
                              finish(*decoder, *answer, completion);
                            });
}

}  // namespace QXExtensionSDK
