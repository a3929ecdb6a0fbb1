#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "AppGroupSDK/store/AppGroupDataStore.h"
#include "AppGroupSDK/store/AppGroupModuleDataStore.h"

namespace AppGroupSDK {

// Keeps one kind of record: the base record, and that of one module and application id. Any thread; blocks
// until the file operation is done.
template <DataStoreModelable Model>
class ModelStoreProtocol {
 public:
  virtual ~ModelStoreProtocol() = default;

  virtual DataStoreResult<Model> fetchModelData() const = 0;
  virtual DataStoreStatus saveModelData(const Model& model) const = 0;
  // `moduleStoreUnavailable` on a store that was made without a module.
  virtual DataStoreResult<Model> fetchModuleScopedModelData() const = 0;
  virtual DataStoreStatus saveModuleScopedModelData(const Model& model) const = 0;

  // As DataStore::update().
  using Change = std::function<const Model&(std::optional<StoredRecord<Model>>)>;
  virtual DataStoreStatus updateModuleScopedModelData(std::optional<QXPlatform::FileVersion>& version,
                                                      const Change& change) const = 0;
};

// The same in the shared container.
template <DataStoreModelable Model>
class ModelStore final : public ModelStoreProtocol<Model> {
 public:
  ModelStore() = default;
  // A raw value that is no module stops the process.
  ModelStore(ExtensionModuleName module, std::string_view appId)
      : moduleDataStore_(std::in_place, stringValue(module), appId) {}

  DataStoreResult<Model> fetchModelData() const override { return dataStore_.template fetch<Model>(); }
  DataStoreStatus saveModelData(const Model& model) const override { return dataStore_.save(model); }

  DataStoreResult<Model> fetchModuleScopedModelData() const override {
    if (!moduleDataStore_) return {DataStoreStatus::moduleStoreUnavailable, std::nullopt};
    return moduleDataStore_->template fetch<Model>();
  }
  // The base record where there is no module-scoped one; both in one access.
  DataStoreResult<Model> fetchModuleScopedOrBaseModelData() const {
    return moduleDataStore_ ? moduleDataStore_->template fetch<Model>(dataStore_) : fetchModelData();
  }
  DataStoreStatus saveModuleScopedModelData(const Model& model) const override {
    return moduleDataStore_ ? moduleDataStore_->save(model) : DataStoreStatus::moduleStoreUnavailable;
  }
  DataStoreStatus updateModuleScopedModelData(
      std::optional<QXPlatform::FileVersion>& version,
      const typename ModelStoreProtocol<Model>::Change& change) const override {
    if (!moduleDataStore_) return DataStoreStatus::moduleStoreUnavailable;
    return moduleDataStore_->template update<Model>(version, change);
  }

 private:
  AppGroupDataStore dataStore_;
  std::optional<AppGroupModuleDataStore> moduleDataStore_;
};

}  // namespace AppGroupSDK
