#pragma once

#include <memory>
#include <vector>

#include "QXExtensionSDK/runtime/processing/ModuleProvider.h"

namespace QXExtensionSDK {

// The framework's own processors: the host's hook, payload decoration, delivery receipts. A new list with new
// processors at every call; any thread.
class DefaultModuleProvider final : public ModuleProvider {
 public:
  std::vector<std::unique_ptr<AsyncProcessing>> processors() const override;
};

}  // namespace QXExtensionSDK
