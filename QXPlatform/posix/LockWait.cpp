#include "QXPlatform/posix/LockWait.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>
#include <thread>

#include "QXPlatform/log/Log.h"

namespace QXPlatform {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 5s;
constexpr auto kCourtesy = 100ms;

// Sleeps a little longer each time.
class Pauses {
 public:
  void next() {
    std::this_thread::sleep_for(pause_);
    pause_ = std::min(2 * pause_, std::chrono::microseconds(1ms));
  }

 private:
  std::chrono::microseconds pause_{50};
};

// Directories that this process has waited for in vain.
class HeldDirectories {
 public:
  static HeldDirectories& shared() {
    // Never destroyed: accesses may go on while the process exits.
    static HeldDirectories& directories = *new HeldDirectories;
    return directories;
  }

  bool contains(const std::string& path) {
    if (count_ == 0) return false;
    const std::lock_guard lock(mutex_);
    return paths_.contains(path);
  }
  // Whether it was not there yet.
  bool insert(const std::string& path) {
    const std::lock_guard lock(mutex_);
    const bool isNew = paths_.insert(path).second;
    count_ = paths_.size();
    return isNew;
  }
  void erase(const std::string& path) {
    if (count_ == 0) return;
    const std::lock_guard lock(mutex_);
    paths_.erase(path);
    count_ = paths_.size();
  }

 private:
  std::mutex mutex_;
  std::set<std::string> paths_;         // guarded by mutex_
  std::atomic<std::size_t> count_ = 0;  // of paths_, so that the usual case takes no lock
};

// Those who wait in a line hold a record lock, shared, on a byte of the directory that stands for the line.
struct flock recordLock(WaitingLine line, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = static_cast<off_t>(line);
  lock.l_len = 1;
  return lock;
}

class Announcement {
 public:
  Announcement(const FileDescriptor& directory, WaitingLine line) : directory_(directory), line_(line) {
    set(F_RDLCK);
  }
  ~Announcement() { set(F_UNLCK); }
  Announcement(const Announcement&) = delete;
  Announcement& operator=(const Announcement&) = delete;

 private:
  void set(short type) const {
    struct flock lock = recordLock(line_, type);
    ::fcntl(directory_.get(), F_OFD_SETLK, &lock);
  }

  const FileDescriptor& directory_;
  const WaitingLine line_;
};

bool somebodyWaits(const FileDescriptor& directory, WaitingLine line) {
  struct flock lock = recordLock(line, F_WRLCK);
  return ::fcntl(directory.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void logGivingUp(const std::string& path, const std::optional<std::string>& holder) {
  const std::string message =
      path + " has been locked for too long by " + holder.value_or("another process") + ": not waited for";
  os_log({"QXPlatform", "Files", LogType::error, message});
}

}  // namespace

LockAnswer tryLock(const FileDescriptor& file, int operation) {
  if (retryScarce([&] { return ::flock(file.get(), operation | LOCK_NB); }) == 0) return LockAnswer::granted;
  return errno == EWOULDBLOCK ? LockAnswer::busy : LockAnswer::refused;
}

LockAnswer LockWait::wait(const Wanted& wanted) {
  auto answer = wanted.attempt();
  for (Pauses pauses; answer == LockAnswer::busy && !isOver(); answer = wanted.attempt()) pauses.next();
  if (answer == LockAnswer::granted) HeldDirectories::shared().erase(path_);
  if (answer == LockAnswer::busy && HeldDirectories::shared().insert(path_)) {
    logGivingUp(path_, wanted.holder());
  }
  return answer;
}

LockAnswer LockWait::wait(WaitingLine line, const Wanted& wanted) {
  const auto answer = wanted.attempt();
  if (answer != LockAnswer::busy) return answer;
  const Announcement announcement(directory_, line);
  return wait(wanted);
}

void LockWait::holdBack(WaitingLine line) {
  if (!somebodyWaits(directory_, line)) return;
  const auto end = std::chrono::steady_clock::now() + kCourtesy;
  for (Pauses pauses; somebodyWaits(directory_, line) && std::chrono::steady_clock::now() < end;) {
    pauses.next();
  }
}

bool LockWait::isOver() {
  const auto now = Clock::current().now();
  if (!deadline_) deadline_ = HeldDirectories::shared().contains(path_) ? now : now + kPatience;
  return now >= *deadline_;
}

}  // namespace QXPlatform
