#include "QXExtensionSDK/service/URLSessionExecutor.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace QXExtensionSDK {

namespace {

// An answer has some hundred bytes, whatever a back end makes of it.
QXPlatform::URLSessionConfiguration bounded(QXPlatform::URLSessionConfiguration configuration) {
  configuration.mostAnswerBytes = std::size_t{1} << 20;
  return configuration;
}

}  // namespace

URLSessionExecutor::URLSessionExecutor(QXPlatform::URLSessionConfiguration configuration)
    : session_(bounded(configuration)) {}

void URLSessionExecutor::execute(QXPlatform::URLRequest request, Completion completion) {
  const auto task = session_.dataTask(
      std::move(request),
      [completion = std::move(completion)](std::optional<QXPlatform::Data> data,
                                           const std::shared_ptr<const QXPlatform::URLResponse>& response,
                                           std::optional<QXPlatform::URLError> error) {
        answer(std::move(data), response.get(), std::move(error), completion);
      });
  task->resume();
}

void URLSessionExecutor::answer(std::optional<QXPlatform::Data> data, const QXPlatform::URLResponse* response,
                                std::optional<QXPlatform::URLError> error, const Completion& completion) {
  if (error) return completion(SendError(*std::move(error)));
  if (!data) return completion(SendError(ServiceError(ServiceError::NoData())));
  const auto* http = dynamic_cast<const QXPlatform::HTTPURLResponse*>(response);
  if (http == nullptr) return;
  const int statusCode = http->statusCode();
  if (statusCode >= 200 && statusCode <= 299) return completion(*std::move(data));
  completion(SendError(ServiceError(ServiceError::Failed{statusCode, std::move(data)})));
}

}  // namespace QXExtensionSDK
