#pragma once

#include <optional>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// What this process has read of small record files, so that one which has not changed since need not be
// coordinated, opened and read again. Any thread.

// What a coordinated reading of the file would find now; `contents` is nothing when there is no such file.
struct KnownContents {
  std::optional<Data> contents;
};

// Nothing when that takes a reading: the file has changed or was never kept, or a writer is at work in its
// directory, or has left something there to be removed.
std::optional<KnownContents> knownContents(const URL& file);

// Keeps what has just been read of the file, if it is small and has not changed for so long that a further
// change must show in its times.
void keepContents(const URL& file, const Data& contents);

}  // namespace QXPlatform
