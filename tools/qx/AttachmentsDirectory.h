#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "QXPlatform/files/LockedDirectory.h"

namespace qx {

// Where the attachments of a run's results go: a directory that the user names, or one for this run under the
// temporary one, which goes again when nothing has come into it or, with "none", whatever has; so do
// those that killed runs of its kind have left, with the next.
class AttachmentsDirectory {
 public:
  explicit AttachmentsDirectory(const std::optional<std::string>& option);
  ~AttachmentsDirectory();
  AttachmentsDirectory(const AttachmentsDirectory&) = delete;
  AttachmentsDirectory& operator=(const AttachmentsDirectory&) = delete;

  // Nothing when no temporary directory can be made; then the extension finds a place of its own.
  const std::optional<std::filesystem::path>& path() const { return path_; }

 private:
  const bool isDropped_;
  std::optional<std::filesystem::path> path_;
  std::optional<QXPlatform::LockedDirectory> own_;
};

}  // namespace qx
