#pragma once

#include <cstddef>
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

// As they stand in the lines of a directory; whoever reads only waits in none.
enum class LockKind : std::uint8_t { replacing, staging, reading };
inline constexpr std::size_t kLockKinds = 3;

enum class AccessKind : std::uint8_t { reading, writing };

// One access to a directory, and the patience it has: five seconds, for all that it has to wait for. When
// they have passed, a line in the log says who holds the lock, and until that kind of lock is granted again,
// nobody in this process waits for it any longer.
class DirectoryAccess {
 public:
  // Waits for its turn: in one process one access writes and two read at a time, so that those who wait need
  // no descriptors which those who are served lack.
  DirectoryAccess(std::string path, AccessKind kind);
  ~DirectoryAccess();
  DirectoryAccess(const DirectoryAccess&) = delete;
  DirectoryAccess& operator=(const DirectoryAccess&) = delete;

  // False when its turn did not come, which a line in the log says.
  bool isAdmitted() const { return isAdmitted_; }

  // What is asked for, and who has it meanwhile.
  struct Wanted {
    LockKind kind;
    std::function<LockAnswer()> attempt;
    std::function<std::optional<std::string>()> holder;
  };

  // Asks until the answer is another than `busy`, or patience has ended. REQUIRES: isAdmitted()
  LockAnswer wait(const Wanted& wanted);
  // The same in a line, one of `directory` for each kind: who waits there says so, and newcomers hold back.
  // Else those that come and go for ever, whose turns overlap or follow each other within microseconds, would
  // keep out one that can only ask again and again.
  LockAnswer waitInLine(const FileDescriptor& directory, const Wanted& wanted);
  // Lets those go first who wait in the line already, if that does not take long. Of accesses that follow
  // each other one looks every ten milliseconds: that is often enough for whoever waits.
  void holdBack(const FileDescriptor& directory, LockKind line);
  // Whether to look for what a killed writer has left behind. As often as that, too.
  bool isTimeForLeftovers();
  // What comes next is not to suffer for what has been waited for, or has been done, before.
  void renewPatience();

 private:
  struct Directory;
  class Directories;

  const std::string path_;
  const AccessKind kind_;
  Clock::TimePoint end_;
  Directory& state_;
  bool isAdmitted_ = false;
};

}  // namespace QXPlatform
