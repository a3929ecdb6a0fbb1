#pragma once

#include <string>
#include <utility>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "QXPlatform/foundation/JSONCoding.h"

namespace AppGroupSDK {

// The application id of one module.
class ModuleAppMapping {
 public:
  // A raw value that is no module stops the process.
  ModuleAppMapping(ExtensionModuleName module, std::string appId)
      : moduleName_(stringValue(module)), appId_(std::move(appId)) {}

  // The module's text form, though a file may hold any text.
  const std::string& moduleName() const { return moduleName_; }
  const std::string& appId() const { return appId_; }

  friend bool operator==(const ModuleAppMapping&, const ModuleAppMapping&) = default;

 private:
  friend QXPlatform::JSONRecordAccess;
  ModuleAppMapping() = default;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("moduleName", &ModuleAppMapping::moduleName_),
                                  QXPlatform::jsonField("appId", &ModuleAppMapping::appId_));
  }

  std::string moduleName_;
  std::string appId_;
};

}  // namespace AppGroupSDK
