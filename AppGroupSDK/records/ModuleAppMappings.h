#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "AppGroupSDK/records/ModuleAppMapping.h"
#include "QXPlatform/foundation/JSONCoding.h"

namespace AppGroupSDK {

// The application ids of all modules.
class ModuleAppMappings {
 public:
  static constexpr std::string_view dataStoreFileName() {
    return "com.veltro.qx.extensionsdk.moduleAppMappings.data";
  }

  // Keeps the last mapping of every module name, in the order in which those stand: A1, B1, A2 gives B1, A2.
  explicit ModuleAppMappings(std::vector<ModuleAppMapping> mappings);

  // As the file has them: one that was written by others may name a module twice.
  const std::vector<ModuleAppMapping>& mappings() const { return mappings_; }

  // That of the module's first mapping.
  std::optional<std::string> fetchAppIdForModule(ExtensionModuleName module) const;

  friend bool operator==(const ModuleAppMappings&, const ModuleAppMappings&) = default;

 private:
  friend QXPlatform::JSONRecordAccess;
  ModuleAppMappings() = default;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("mappings", &ModuleAppMappings::mappings_));
  }

  std::vector<ModuleAppMapping> mappings_;
};

}  // namespace AppGroupSDK
