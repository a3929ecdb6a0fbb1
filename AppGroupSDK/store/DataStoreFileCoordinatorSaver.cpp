#include "AppGroupSDK/store/DataStoreFileCoordinatorSaver.h"

#include <utility>

#include "QXPlatform/files/FileContents.h"

namespace AppGroupSDK {

DataStoreFileCoordinatorSaver::DataStoreFileCoordinatorSaver(
    std::unique_ptr<const QXPlatform::FileCoordinator> fileCoordinator)
    : fileCoordinator_(std::move(fileCoordinator)) {}

bool DataStoreFileCoordinatorSaver::write(std::string_view bytes, const QXPlatform::URL& destination) const {
  // What no read would take must not replace what one does.
  if (bytes.size() > QXPlatform::kMaxFileContents) return false;
  const auto outcome = fileCoordinator_->coordinateWritingForReplacing(
      destination, [&](const QXPlatform::URL& file) { return QXPlatform::writeContents(bytes, file); });
  return outcome != QXPlatform::FileCoordinator::Outcome::failed;
}

std::optional<QXPlatform::Data> DataStoreFileCoordinatorSaver::read(const QXPlatform::URL& source) const {
  std::optional<QXPlatform::Data> bytes;
  fileCoordinator_->coordinateReading(
      source, [&](const QXPlatform::URL& file) { bytes = QXPlatform::readContents(file); });
  return bytes;
}

}  // namespace AppGroupSDK
