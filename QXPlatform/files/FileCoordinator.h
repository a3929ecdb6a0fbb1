#pragma once

#include <cstdint>
#include <functional>

#include "QXPlatform/files/FileContents.h"
#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// Coordinated access to record files across threads and processes: readers of a file exclude its replacing,
// and writers each other. A crash at any instant leaves the old or the new content, never a mixture; a power
// failure may undo the last replacings, too, but no more. Blocks until the others are done, though for five
// seconds at most before the accessor runs and, when it has written, five more: then the access fails, a line
// in the log names the process that holds the lock, and accesses of the kind to that directory do not wait
// any more until one has been served again. An accessor must not coordinate access to the same directory
// itself. Any thread.
class FileCoordinator {
 public:
  // `found`: what stands in the target's place.
  using WritingAccessor = std::function<bool(const FileDescriptor& staging, const FileVersion& found)>;
  using ReadingAccessor = std::function<void(const URL&)>;

  enum class Outcome : std::uint8_t {
    replaced,   // the new content is in place
    failed,     // the target is as it was
    calledOff,  // the system has no lock to grant, so the accessor never ran
  };

  FileCoordinator() = default;
  virtual ~FileCoordinator() = default;
  FileCoordinator(const FileCoordinator&) = delete;
  FileCoordinator& operator=(const FileCoordinator&) = delete;

  // Writing for replacing: the accessor gets an empty staging file (mode 0600) beside the target, open for
  // writing, and returns whether it has written it. If so, that file takes the target's place in one step,
  // and `replaced` tells its version; otherwise it goes. No other writer replaces anything in the directory
  // meanwhile, so the accessor may read the target and write what follows from it. What else bears the
  // staging file's name goes too: one left behind by a killed writer, or a directory with all that is in it.
  // `failed` without running the accessor: the target is a symbolic link, a file that this user may not
  // write, or no file URL, its directory is missing, or the staging file cannot be made (a read-only
  // directory, a full disk).
  virtual Outcome coordinateWritingForReplacing(const URL& target, const WritingAccessor& accessor,
                                                FileVersion* replaced = nullptr) const;

  // The accessor gets the target's own URL, whatever is there: readContents() follows no symbolic link.
  // Nothing else in the directory is replaced meanwhile either, so it may read another file as well. What a
  // killed writer has left goes first, where the directory may be written. The accessor is not called when
  // the target is no file URL, its directory is missing, or no lock is granted.
  virtual void coordinateReading(const URL& target, const ReadingAccessor& accessor) const;
};

}  // namespace QXPlatform
