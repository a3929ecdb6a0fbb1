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

// What a change finds where its record is kept.
template <typename Model>
struct StoredRecord {
  // Nothing when there is no record, or what is there is none.
  std::optional<Model> value;
  // Then: the name under which that is kept beside the record from now on. Nothing for an empty file.
  std::optional<std::string> setAsideAs;
};

// Keeps one record of each kind, each whole in a JSON file of its own directly in the container. Nothing is
// cached: a save replaces the file and a fetch reads it. Neither logs nor throws; blocks until the file
// operation is done. Any thread.
class DataStore {
 public:
  // What the name of a file ends in that was replaced without being a record.
  static constexpr std::string_view kSetAsideSuffix = ".damaged";

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
    return decoded<Model>(dataSaver_->read(*file));
  }

  // The same, but where that would be `noData` the other store's record, found in the same access.
  template <DataStoreModelable Model>
  DataStoreResult<Model> fetch(const DataStore& otherwise) const {
    const auto file = fileURL<Model>();
    const auto other = otherwise.fileURL<Model>();
    if (!file || !other) return {(file ? other : file).error(), std::nullopt};
    return decoded<Model>(dataSaver_->read(*file, *other));
  }

  // Changes a record while nobody else saves it. `change(std::optional<StoredRecord<Model>>)` gets what is
  // there now, or nothing when that is still what `version` stands for: what this store saved or found when
  // it was last called with it. It returns the record to be saved, a `const Model&` that outlives the call.
  // It is not called when there is no container or no lock, or when the file cannot be read: then nothing is
  // saved.
  template <DataStoreModelable Model, typename Change>
  DataStoreStatus update(std::optional<QXPlatform::FileVersion>& version, const Change& change) const {
    const auto file = fileURL<Model>();
    if (!file) return file.error();
    auto status = DataStoreStatus::writeFailed;
    const auto changed = [&](const DataStoreSaving::Found* found) -> std::optional<std::string> {
      std::optional<StoredRecord<Model>> stored;
      if (found != nullptr) stored.emplace();
      if (found != nullptr && *found) {
        auto model = QXPlatform::decodeJSON<Model>((*found)->view());
        if (model) {
          stored->value = *std::move(model);
        } else if (!setAside(**found, *file, stored->setAsideAs)) {
          return std::nullopt;
        }
      }
      auto bytes = QXPlatform::encodeJSON(change(std::move(stored)));
      if (bytes) return *std::move(bytes);
      status = DataStoreStatus::encodingFailed;
      return std::nullopt;
    };
    return dataSaver_->update(*file, version, changed) ? DataStoreStatus::success : status;
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
  template <DataStoreModelable Model>
  static DataStoreResult<Model> decoded(const std::optional<QXPlatform::Data>& bytes) {
    if (!bytes) return {DataStoreStatus::noData, std::nullopt};
    auto model = QXPlatform::decodeJSON<Model>(bytes->view());
    if (!model) return {DataStoreStatus::decodingFailed, std::nullopt};
    return {DataStoreStatus::success, *std::move(model)};
  }

  virtual std::string fileName(std::string_view baseName) const = 0;

  // Keeps what is no record beside the file that is about to be replaced. False when it could not.
  static bool setAside(const QXPlatform::Data& bytes, const QXPlatform::URL& file,
                       std::optional<std::string>& name);
  QXPlatform::Result<QXPlatform::URL, DataStoreStatus> locate(std::string_view baseName) const;

  std::unique_ptr<const DataStoreDirectoryProviding> directoryProvider_;
  std::unique_ptr<const DataStoreSaving> dataSaver_;
};

}  // namespace AppGroupSDK
