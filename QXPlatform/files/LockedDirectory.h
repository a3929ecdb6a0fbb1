#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/foundation/Result.h"

namespace QXPlatform {

// A new directory of mode 0700 under the system's temporary one, locked for as long as this lives: so it is
// told from one that a killed process has left. It is not removed with this. Any thread.
class LockedDirectory {
 public:
  // Its name begins with the prefix.
  static Result<LockedDirectory> make(std::string_view prefix);

  const std::filesystem::path& path() const { return path_; }

 private:
  LockedDirectory(std::filesystem::path path, std::optional<FileDescriptor> held);

  std::filesystem::path path_;
  std::optional<FileDescriptor> held_;
};

enum class Leftovers { all, empty };

// Removes this user's directories with such a prefix that nobody has locked: all, with what is in them, or
// the empty ones.
void removeUnlockedDirectories(std::string_view prefix, Leftovers leftovers);

}  // namespace QXPlatform
