#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "QXPlatform/dispatch/Clock.h"
#include "QXPlatform/files/FileDescriptor.h"

namespace QXPlatform {

enum class LockAnswer : std::uint8_t {
  granted,
  busy,
  refused,  // the system has no such lock to give
};

// One attempt; does not block.
LockAnswer tryLock(const FileDescriptor& file, int operation);

// The lines in which whoever is not served at once waits. Who has waited says so, and newcomers hold back:
// else those that come and go for ever, whose turns overlap or follow each other within microseconds, would
// keep out one that can only ask again and again.
enum class WaitingLine : std::uint8_t { directoryLock, stagingFile };

enum class AccessKind : std::uint8_t { reading, writing };

// One access to a directory, and the patience it has: five seconds, for all that it has to wait for. When
// they have passed, a line in the log says who holds the lock, and until it is granted again, nobody in this
// process waits for it any longer.
class DirectoryAccess {
 public:
  // Waits for its turn: in one process one access writes and two read at a time, so that those who wait need
  // no descriptors which those who are served lack.
  DirectoryAccess(std::string path, AccessKind kind);
  ~DirectoryAccess();
  DirectoryAccess(const DirectoryAccess&) = delete;
  DirectoryAccess& operator=(const DirectoryAccess&) = delete;

  // False when its turn did not come.
  bool isAdmitted() const { return isAdmitted_; }

  // What is asked for, and who has it meanwhile.
  struct Wanted {
    std::function<LockAnswer()> attempt;
    std::function<std::optional<std::string>()> holder;
  };

  // Asks until the answer is another than `busy`, or patience has ended. REQUIRES: isAdmitted()
  LockAnswer wait(const Wanted& wanted);
  // The same, in a line of `directory`.
  LockAnswer wait(const FileDescriptor& directory, WaitingLine line, const Wanted& wanted);
  // Lets those go first who wait in the line already, if that does not take long.
  static void holdBack(const FileDescriptor& directory, WaitingLine line);

 private:
  struct Directory;
  class Directories;

  const std::string path_;
  const AccessKind kind_;
  const Clock::TimePoint end_;
  Directory& state_;
  bool isAdmitted_ = false;
};

}  // namespace QXPlatform
