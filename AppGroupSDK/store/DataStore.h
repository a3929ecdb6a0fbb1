#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "AppGroupSDK/store/DataStoreDirectoryProviding.h"
#include "AppGroupSDK/store/DataStoreModelable.h"
#include "AppGroupSDK/store/DataStoreResult.h"
#include "AppGroupSDK/store/DataStoreSaving.h"
#include "AppGroupSDK/store/DataStoreStatus.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/foundation/Result.h"

namespace AppGroupSDK {

// Keeps one record of each kind, each whole in a JSON file of its own directly in the container. Nothing is
// cached: a save replaces the file and a fetch reads it. Neither logs nor throws; blocks until the file
// operation is done. Any thread.
class DataStore {
 public:
  virtual ~DataStore() = default;

  template <DataStoreModelable Model>
  DataStoreStatus save(const Model& model) const {
    const auto file = fileURL<Model>();
    if (!file) return file.error();
    const auto bytes = QXPlatform::encodeJSON(model);
    if (!bytes) return DataStoreStatus::encodingFailed;
    return dataSaver_->write(*bytes, *file) ? DataStoreStatus::success : DataStoreStatus::writeFailed;
  }

  template <DataStoreModelable Model>
  DataStoreResult<Model> fetch() const {
    const auto file = fileURL<Model>();
    if (!file) return {file.error(), std::nullopt};
    const auto bytes = dataSaver_->read(*file);
    if (!bytes) return {DataStoreStatus::noData, std::nullopt};
    auto model = QXPlatform::decodeJSON<Model>(bytes->view());
    if (!model) return {DataStoreStatus::decodingFailed, std::nullopt};
    return {DataStoreStatus::success, *std::move(model)};
  }

  // Where a kind of record is kept, whether or not there is one; or the status why there can be none.
  template <DataStoreModelable Model>
  QXPlatform::Result<QXPlatform::URL, DataStoreStatus> fileURL() const {
    return locate(Model::dataStoreFileName());
  }

 protected:
  DataStore(std::unique_ptr<const DataStoreDirectoryProviding> directoryProvider,
            std::unique_ptr<const DataStoreSaving> dataSaver);
  DataStore(DataStore&&) = default;

 private:
  virtual std::string fileName(std::string_view baseName) const = 0;

  QXPlatform::Result<QXPlatform::URL, DataStoreStatus> locate(std::string_view baseName) const;

  std::unique_ptr<const DataStoreDirectoryProviding> directoryProvider_;
  std::unique_ptr<const DataStoreSaving> dataSaver_;
};

}  // namespace AppGroupSDK
