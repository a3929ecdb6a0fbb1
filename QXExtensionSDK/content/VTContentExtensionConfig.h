#pragma once

#include "QXExtensionSDK/runtime/logging/LogLevel.h"
#include "QXExtensionSDK/service/DefaultRequestTimeout.h"

namespace QXExtensionSDK {

// The host's configuration of the content extension. Immutable.
class VTContentExtensionConfig {
 public:
  VTContentExtensionConfig() = delete;
  // `timeoutIntervalForRequest`: in seconds.
  VTContentExtensionConfig(LogLevel logLevel, double timeoutIntervalForRequest)
      : logLevel_(logLevel), timeoutIntervalForRequest_(timeoutIntervalForRequest) {}

  // Used wherever the host says nothing: no log, 15 seconds.
  static VTContentExtensionConfig defaultConfig() { return {LogLevel::none, defaultRequestTimeout}; }

  LogLevel logLevel() const { return logLevel_; }
  // In seconds. The carousel's images have a time-out of their own, which this does not change.
  double timeoutIntervalForRequest() const { return timeoutIntervalForRequest_; }

 private:
  LogLevel logLevel_;
  double timeoutIntervalForRequest_;
};

}  // namespace QXExtensionSDK
