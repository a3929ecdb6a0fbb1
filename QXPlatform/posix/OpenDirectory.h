#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "QXPlatform/files/FileDescriptor.h"

namespace QXPlatform {

// A directory that may stay open from one access to the next: to look whether it is still the one costs less
// than to open it again.
class OpenDirectory {
 public:
  explicit OpenDirectory(const std::string& path);

  bool valid() const { return descriptor_.valid(); }
  const FileDescriptor& descriptor() const { return descriptor_; }
  // Whether to open the path would give the same once more. Not in a forked child: locks on the descriptor
  // that it has inherited are its parent's as well.
  bool isStillAt(const std::string& path);

 private:
  struct Identity {
    dev_t device;
    ino_t number;

    friend bool operator==(const Identity&, const Identity&) = default;
  };

  FileDescriptor descriptor_;
  std::optional<unsigned> forks_;     // before it was opened
  std::optional<Identity> identity_;  // once it has been asked for
};

}  // namespace QXPlatform
