#pragma once

#include <filesystem>
#include <mutex>
#include <optional>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// Where the attachments of shown notifications stay, as on the platform, which moves them to a place of its
// own. Any thread.
class AttachmentStore {
 public:
  // The directory is made with the first attachment. Without one it is a new directory, of mode 0700, under
  // the system's temporary one.
  explicit AttachmentStore(std::optional<std::filesystem::path> directory = std::nullopt);

  // Moves the file into the directory, under its own name or, where that is taken, under one with a number;
  // nothing is ever replaced.
  Result<URL> take(const URL& file);

 private:
  std::optional<Error> makeDirectory();

  std::mutex mutex_;
  // Below, guarded by mutex_.
  std::optional<std::filesystem::path> directory_;
  bool isOwn_;
  bool isMade_ = false;
  unsigned long clashes_ = 0;
};

}  // namespace QXPlatform
