#pragma once

#include "QXExtensionSDK/service/NetworkExecutor.h"
#include "QXPlatform/network/URLSession.h"

namespace QXExtensionSDK {

// Sends every request through one session. Statuses 200 to 299 are good answers.
class URLSessionExecutor final : public NetworkExecutor {
 public:
  explicit URLSessionExecutor(QXPlatform::URLSessionConfiguration configuration);

  void execute(QXPlatform::URLRequest request, Completion completion) override;

  // What becomes of an answer: see NetworkExecutor.
  static void answer(std::optional<QXPlatform::Data> data, const QXPlatform::URLResponse* response,
                     std::optional<QXPlatform::URLError> error, const Completion& completion);

 private:
  QXPlatform::URLSession session_;
};

}  // namespace QXExtensionSDK
