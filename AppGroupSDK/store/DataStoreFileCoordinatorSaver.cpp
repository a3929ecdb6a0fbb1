#include "AppGroupSDK/store/DataStoreFileCoordinatorSaver.h"

#include <utility>

#include "QXPlatform/files/FileContents.h"

namespace AppGroupSDK {

namespace {

// What the change makes of the file, which nobody else writes meanwhile.
std::optional<std::string> changed(const QXPlatform::URL& file,
                                   const std::optional<QXPlatform::FileVersion>& known,
                                   const DataStoreSaving::Change& change) {
  if (known && QXPlatform::fileVersion(file) == *known) return change(nullptr);
  auto contents = QXPlatform::readContents(file);
  if (!contents && contents.error() == QXPlatform::ReadFailure::unreadable) return std::nullopt;
  const DataStoreSaving::Found found =
      contents ? std::optional(*std::move(contents)) : DataStoreSaving::Found();
  return change(&found);
}

}  // namespace

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
  fileCoordinator_->coordinateReading(source, [&](const QXPlatform::URL& file) {
    auto contents = QXPlatform::readContents(file);
    if (contents) bytes = *std::move(contents);
  });
  return bytes;
}

bool DataStoreFileCoordinatorSaver::update(const QXPlatform::URL& file,
                                           std::optional<QXPlatform::FileVersion>& version,
                                           const Change& change) const {
  using QXPlatform::FileCoordinator;
  QXPlatform::FileVersion written;
  const auto replace = [&](const QXPlatform::URL& staging) {
    const auto bytes = changed(file, version, change);
    if (!bytes || bytes->size() > QXPlatform::kMaxFileContents) return false;
    if (!QXPlatform::writeContents(*bytes, staging)) return false;
    written = QXPlatform::fileVersion(staging);
    return true;
  };
  const auto outcome = fileCoordinator_->coordinateWritingForReplacing(file, replace);
  if (outcome == FileCoordinator::Outcome::replaced) version = written;
  return outcome != FileCoordinator::Outcome::failed;
}

}  // namespace AppGroupSDK
