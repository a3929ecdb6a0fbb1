#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "QXPlatform/files/LockedDirectory.h"
#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXPlatform/foundation/Result.h"

namespace QXPlatform {

// The one directory under the system's temporary directory that holds all that this process's sessions
// download: made with the first file, with mode 0700, and removed with all that is left in it when the
// process exits. With the first session those of processes that were killed are removed. Any thread.
class DownloadDirectory {
 public:
  static DownloadDirectory& shared();

  // A new directory inside it.
  Result<std::string> makeSubdirectory();
  // Whether the file lies inside it, as written.
  bool contains(const std::filesystem::path& file) const;

 private:
  friend class NeverDestroyed<DownloadDirectory>;
  DownloadDirectory();
  void removeAll();

  mutable std::mutex mutex_;
  // Below, guarded by mutex_.
  std::optional<LockedDirectory> directory_;
  unsigned long made_ = 0;
};

}  // namespace QXPlatform
