#include "AppGroupSDK/records/ModuleAppMappings.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace AppGroupSDK {

ModuleAppMappings::ModuleAppMappings(std::vector<ModuleAppMapping> mappings) {
  std::unordered_set<std::string_view> seen;
  for (auto mapping = mappings.rbegin(); mapping != mappings.rend(); ++mapping) {
    if (seen.insert(mapping->moduleName()).second) mappings_.push_back(*mapping);
  }
  std::ranges::reverse(mappings_);
}

std::optional<std::string> ModuleAppMappings::fetchAppIdForModule(ExtensionModuleName module) const {
  const auto mapping = std::ranges::find(mappings_, stringValue(module), &ModuleAppMapping::moduleName);
  return mapping == mappings_.end() ? std::nullopt : std::optional(mapping->appId());
}

}  // namespace AppGroupSDK
