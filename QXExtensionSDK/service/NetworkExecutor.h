#pragma once

#include <functional>

#include "QXExtensionSDK/service/ServiceError.h"
#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/network/URLRequest.h"

namespace QXExtensionSDK {

// Performs HTTP requests. Any thread.
class NetworkExecutor {
 public:
  // The body of a good answer, or why there is none.
  using Completion = std::function<void(QXPlatform::Result<QXPlatform::Data, SendError>)>;

  virtual ~NetworkExecutor() = default;
  // Returns at once. The completion is called at most once, on a background queue, also when this object is
  // gone by then; it is never called for an answer that is no HTTP answer.
  virtual void execute(QXPlatform::URLRequest request, Completion completion) = 0;
};

}  // namespace QXExtensionSDK
