#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

class FileDescriptor;

// Twice the largest record, a full list of receipts; a larger file is not ours and, read into a tree, would
// not fit an extension's memory.
inline constexpr std::size_t kMaxFileContents = std::size_t{4} << 20;

// Tells one content of a record's file from every other that it has had, as long as all of them were put in
// place by a FileCoordinator. Made without arguments it stands for no file.
struct FileVersion {
  std::uint64_t file = 0;
  std::uint64_t size = 0;
  std::int64_t modified = 0;  // nanoseconds since 1970

  friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

enum class ReadFailure : std::uint8_t {
  absent,      // there is no such file
  unreadable,  // there is something that cannot be read, or not now
};

// The whole content of a regular file, and in `version` which it is. `unreadable` when there is no permission
// or the file is larger than kMaxFileContents, a symbolic link, directory, pipe, socket or device; never
// blocks on one of these. A passing want of descriptors or memory is waited out for up to two seconds. Any
// thread.
Result<Data, ReadFailure> readContents(const URL& file, FileVersion* version = nullptr);

// Replaces the content of a regular file, which is made (mode 0600) when it is not there. Neither atomic nor
// durable by itself: see FileCoordinator. False when it failed, the file then holding anything. Any thread.
bool writeContents(std::string_view bytes, const URL& file);
// The same for a file that is open for writing, and empty.
bool writeContents(std::string_view bytes, const FileDescriptor& file);

}  // namespace QXPlatform
