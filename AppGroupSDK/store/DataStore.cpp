#include "AppGroupSDK/store/DataStore.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace AppGroupSDK {

DataStore::DataStore(std::unique_ptr<const DataStoreDirectoryProviding> directoryProvider,
                     std::unique_ptr<const DataStoreSaving> dataSaver)
    : directoryProvider_(std::move(directoryProvider)), dataSaver_(std::move(dataSaver)) {}

bool DataStore::setAside(const QXPlatform::Data& bytes, const QXPlatform::URL& file,
                         std::optional<std::string>& name) {
  if (bytes.view().empty()) return true;
  const std::string kept = file.filePath().append(kSetAsideSuffix);
  const std::string beside = kept + ".new";
  name = QXPlatform::URL::file(kept).lastPathComponent();
  std::error_code error;
  // An earlier one stays until this is whole.
  if (QXPlatform::writeContents(bytes.view(), QXPlatform::URL::file(beside))) {
    std::filesystem::rename(beside, kept, error);
    if (!error) return true;
  }
  std::filesystem::remove(beside, error);
  return false;
}

QXPlatform::Result<QXPlatform::URL, DataStoreStatus> DataStore::locate(std::string_view baseName) const {
  const auto container = directoryProvider_->containerURL();
  if (!container) return DataStoreStatus::containerUnavailable;
  if (!container->isFileURL()) return DataStoreStatus::containerNotFileURL;
  return container->appendingPathComponent(fileName(baseName));
}

}  // namespace AppGroupSDK
