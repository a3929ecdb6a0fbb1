#include "AppGroupSDK/store/DataStore.h"

#include <utility>

namespace AppGroupSDK {

DataStore::DataStore(std::unique_ptr<const DataStoreDirectoryProviding> directoryProvider,
                     std::unique_ptr<const DataStoreSaving> dataSaver)
    : directoryProvider_(std::move(directoryProvider)), dataSaver_(std::move(dataSaver)) {}

bool DataStore::setAside(const QXPlatform::Data& bytes, const QXPlatform::URL& file,
                         std::optional<std::string>& name) {
  if (bytes.view().empty()) return true;
  const auto kept = QXPlatform::URL::file(file.filePath().append(kSetAsideSuffix));
  name = kept.lastPathComponent();
  return QXPlatform::writeContents(bytes.view(), kept);
}

QXPlatform::Result<QXPlatform::URL, DataStoreStatus> DataStore::locate(std::string_view baseName) const {
  const auto container = directoryProvider_->containerURL();
  if (!container) return DataStoreStatus::containerUnavailable;
  if (!container->isFileURL()) return DataStoreStatus::containerNotFileURL;
  return container->appendingPathComponent(fileName(baseName));
}

}  // namespace AppGroupSDK
