#pragma once

#include "QXExtensionSDK/service/NetworkExecutor.h"
#include "platform/network/URLSession.h"

namespace QXExtensionSDK {

// Sends every request through one session. Statuses 200 to 299 are good answers.
class URLSessionExecutor final : public NetworkExecutor {
 public:
  explicit URLSessionExecutor(platform::URLSessionConfiguration configuration);

  void execute(platform::URLRequest request, Completion completion) override;

  // What becomes of an answer: see NetworkExecutor.
  static void answer(std::optional<platform::Data> data, const platform::URLResponse* response,
                     std::optional<platform::URLError> error, const Completion& completion);

 private:
  platform::URLSession session_;
};

}  // namespace QXExtensionSDK
