#pragma once

#include <memory>

#include "QXExtensionSDK/runtime/processing/VTNotificationServiceConfig.h"

namespace QXExtensionSDK {

// Answers the host's current configuration. Any thread.
class ServiceExtensionConfigProviding {
 public:
  virtual ~ServiceExtensionConfigProviding() = default;
  virtual VTNotificationServiceConfig clientProvideConfig() const = 0;
};

// The role of a processor that reads the configuration; the worker hands itself over right after making it.
class ConfigurableVtqxProcessing {
 public:
  virtual ~ConfigurableVtqxProcessing() = default;
  virtual void setConfigDelegate(std::weak_ptr<const ServiceExtensionConfigProviding> delegate) = 0;
};

}  // namespace QXExtensionSDK
