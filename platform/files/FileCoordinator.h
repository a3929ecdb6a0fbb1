#pragma once

#include <functional>

#include "platform/foundation/URL.h"

namespace platform {

// Coordinated access to record files across threads and processes: readers of a file exclude its writers. A
// crash at any instant leaves the old or the new content, never a mixture. Any thread.
class FileCoordinator {
 public:
  // Gets the URL to work on; returns whether it succeeded.
  using Accessor = std::function<bool(const URL&)>;

  // Writing for replacing: the accessor gets the URL of an empty staging file (mode 0600) beside the target.
  // When it returns true, the staging file takes the target's place in one step and the directory is synced;
  // otherwise the target stays as it was and the staging file goes. Staging files left behind by a killed
  // writer are removed. Returns false when the accessor ran and the new content is not in place, or when it
  // could not be run because the target is a symbolic link or the staging file cannot be made (a full disk, a
  // read-only directory).
  bool coordinateWritingForReplacing(const URL& target, const Accessor& accessor) const;

  // The accessor gets the target's own URL; it is not called when the target is a symbolic link.
  void coordinateReading(const URL& target, const Accessor& accessor) const;
};

}  // namespace platform
