#pragma once

#include <sys/stat.h>

#include "QXPlatform/files/FileContents.h"

namespace QXPlatform {

inline FileVersion versionOf(const struct stat& status) {
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  return {static_cast<std::uint64_t>(status.st_ino), static_cast<std::uint64_t>(status.st_size),
          status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

}  // namespace QXPlatform
