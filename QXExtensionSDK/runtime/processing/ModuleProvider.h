#pragma once

#include <memory>
#include <vector>

#include "QXExtensionSDK/runtime/processing/AsyncProcessing.h"

namespace QXExtensionSDK {

// Supplies the processors of one notification, in the order in which they are to be started.
class ModuleProvider {
 public:
  virtual ~ModuleProvider() = default;
  virtual std::vector<std::unique_ptr<AsyncProcessing>> processors() const = 0;
};

}  // namespace QXExtensionSDK
