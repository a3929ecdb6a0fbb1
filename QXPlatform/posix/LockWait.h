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

// The patience of one access to a directory: five seconds, for all that it has to wait for. When they have
// passed, a line in the log says who holds the lock, and until somebody has been served in that directory
// again, nobody in this process waits there any longer.
class LockWait {
 public:
  explicit LockWait(const std::string& directoryPath, const FileDescriptor& directory)
      : path_(directoryPath), directory_(directory) {}

  // What is asked for, and who has it meanwhile.
  struct Wanted {
    std::function<LockAnswer()> attempt;
    std::function<std::optional<std::string>()> holder;
  };

  // Asks until the answer is another than `busy`, or patience has ended.
  LockAnswer wait(const Wanted& wanted);
  // The same, in a line.
  LockAnswer wait(WaitingLine line, const Wanted& wanted);
  // Lets those go first who wait in the line already, if that does not take long.
  void holdBack(WaitingLine line);

 private:
  bool isOver();

  const std::string& path_;
  const FileDescriptor& directory_;
  std::optional<Clock::TimePoint> deadline_;
};

}  // namespace QXPlatform
