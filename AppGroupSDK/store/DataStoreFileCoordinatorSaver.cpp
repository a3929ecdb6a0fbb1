#include "AppGroupSDK/store/DataStoreFileCoordinatorSaver.h"

#include <utility>

#include "QXPlatform/files/FileContents.h"

namespace AppGroupSDK {

namespace {

// What the change makes of the file, which nobody else writes meanwhile.
std::optional<std::string> changed(const QXPlatform::URL& file, const DataStoreSaving::Change& change) {
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
      destination, [&](const QXPlatform::FileDescriptor& staging, const QXPlatform::FileVersion&) {
        return QXPlatform::writeContents(bytes, staging);
      });
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

std::optional<QXPlatform::Data> DataStoreFileCoordinatorSaver::read(const QXPlatform::URL& source,
                                                                    const QXPlatform::URL& otherwise) const {
  std::optional<QXPlatform::Data> bytes;
  fileCoordinator_->coordinateReading(otherwise, [&](const QXPlatform::URL& file) {
    auto contents = QXPlatform::readContents(source);
    if (!contents) contents = QXPlatform::readContents(file);
    if (contents) bytes = *std::move(contents);
  });
  return bytes;
}

bool DataStoreFileCoordinatorSaver::update(const QXPlatform::URL& file,
                                           std::optional<QXPlatform::FileVersion>& version,
                                           const Change& change) const {
  using QXPlatform::FileCoordinator;
  QXPlatform::FileVersion written;
  const auto replace = [&](const QXPlatform::FileDescriptor& staging, const QXPlatform::FileVersion& found) {
    const auto bytes = found == version ? change(nullptr) : changed(file, change);
    return bytes && bytes->size() <= QXPlatform::kMaxFileContents &&
           QXPlatform::writeContents(*bytes, staging);
  };
  const auto outcome = fileCoordinator_->coordinateWritingForReplacing(file, replace, &written);
  if (outcome == FileCoordinator::Outcome::replaced) version = written;
  return outcome != FileCoordinator::Outcome::failed;
}

}  // namespace AppGroupSDK
