#include "tools/qx/AttachmentsDirectory.h"

#include <system_error>
#include <utility>

namespace qx {

using QXPlatform::Leftovers;
using QXPlatform::LockedDirectory;
using QXPlatform::removeUnlockedDirectories;

AttachmentsDirectory::AttachmentsDirectory(const std::optional<std::string>& option)
    : isDropped_(option == "none") {
  if (option && !isDropped_) {
    std::error_code error;
    path_ = std::filesystem::absolute(*option, error);
    return;
  }
  const char* const prefix = isDropped_ ? "qx-push-dropped-" : "qx-push-kept-";
  removeUnlockedDirectories(prefix, isDropped_ ? Leftovers::all : Leftovers::empty);
  auto made = LockedDirectory::make(prefix);
  if (!made) return;
  own_.emplace(*std::move(made));
  path_ = own_->path();
}

AttachmentsDirectory::~AttachmentsDirectory() {
  std::error_code ignored;
  if (!own_) return;
  if (isDropped_) {
    std::filesystem::remove_all(own_->path(), ignored);
  } else {
    std::filesystem::remove(own_->path(), ignored);
  }
}

}  // namespace qx
