#include "QXPlatform/notifications/AttachmentStore.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace QXPlatform {
namespace {

namespace fs = std::filesystem;

// Puts the file at the new place as well, unless something stands there.
std::error_code linkOrCopy(const fs::path& from, const fs::path& to) {
  if (link(from.c_str(), to.c_str()) == 0) return {};
  std::error_code error(errno, std::generic_category());
  if (error == std::errc::file_exists) return error;
  // Another file system, or one without links.
  fs::copy_file(from, to, fs::copy_options::none, error);
  return error;
}

}  // namespace

AttachmentStore::AttachmentStore(std::optional<fs::path> directory)
    : directory_(std::move(directory)), isOwn_(!directory_) {}

Result<URL> AttachmentStore::take(const URL& file) {
  const std::lock_guard lock(mutex_);
  if (auto failed = makeDirectory()) return *failed;
  const fs::path source = file.filePath();
  fs::path target = *directory_ / source.filename();
  std::error_code error;
  while ((error = linkOrCopy(source, target)) == std::errc::file_exists) {
    const std::string stem = source.stem().native() + "-" + std::to_string(++clashes_);
    target = *directory_ / (stem + source.extension().native());
  }
  if (error) return Error{target.native() + ": " + error.message()};
  unlink(source.c_str());
  return URL::file(target.native());
}

std::optional<Error> AttachmentStore::makeDirectory() {
  if (isMade_) return std::nullopt;
  std::error_code error;
  if (isOwn_) {
    std::string path = (fs::temp_directory_path(error) / "qx-attachments-XXXXXX").native();
    if (!error && mkdtemp(path.data()) == nullptr) error.assign(errno, std::generic_category());
    directory_ = path;
  } else {
    fs::create_directories(*directory_, error);
    if (!error) directory_ = fs::absolute(*directory_, error);
  }
  if (error) return Error{directory_->native() + ": " + error.message()};
  isMade_ = true;
  return std::nullopt;
}

}  // namespace QXPlatform
