#include "AppGroupSDK/store/DataStoreFileCoordinatorSaver.h"

#include <utility>

#include "platform/files/FileContents.h"

namespace AppGroupSDK {

DataStoreFileCoordinatorSaver::DataStoreFileCoordinatorSaver(
    std::unique_ptr<const platform::FileCoordinator> fileCoordinator)
    : fileCoordinator_(std::move(fileCoordinator)) {}

bool DataStoreFileCoordinatorSaver::write(std::string_view bytes, const platform::URL& destination) const {
  // What no read would take must not replace what one does.
  if (bytes.size() > platform::kMaxFileContents) return false;
  const auto outcome = fileCoordinator_->coordinateWritingForReplacing(
      destination, [&](const platform::URL& file) { return platform::writeContents(bytes, file); });
  return outcome != platform::FileCoordinator::Outcome::failed;
}

std::optional<platform::Data> DataStoreFileCoordinatorSaver::read(const platform::URL& source) const {
  std::optional<platform::Data> bytes;
  fileCoordinator_->coordinateReading(
      source, [&](const platform::URL& file) { bytes = platform::readContents(file); });
  return bytes;
}

}  // namespace AppGroupSDK
