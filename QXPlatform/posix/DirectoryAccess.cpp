#include "QXPlatform/posix/DirectoryAccess.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXPlatform/log/Log.h"

namespace QXPlatform {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 5s;
constexpr auto kCourtesy = 100ms;
constexpr auto kBetweenLooks = 10ms;

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

// Those who wait in a line hold a record lock, shared, on a byte of the directory that stands for the line.
struct flock recordLock(LockKind line, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = static_cast<off_t>(line);
  lock.l_len = 1;
  return lock;
}

class Announcement {
 public:
  Announcement(const FileDescriptor& directory, LockKind line) : directory_(directory), line_(line) {
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
  const LockKind line_;
};

bool somebodyWaits(const FileDescriptor& directory, LockKind line) {
  struct flock lock = recordLock(line, F_WRLCK);
  return ::fcntl(directory.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void logGivingUp(const std::string& path, std::string_view why) {
  os_log(
      {"QXPlatform", "Files", LogType::error, path + " has been " + std::string(why) + ": not waited for"});
}

}  // namespace

// What the accesses of this process to one directory know of each other. A process has few directories: they
// are kept.
struct DirectoryAccess::Directory {
  using Instant = std::chrono::steady_clock::time_point;

  int readers = 0;  // guarded by Directories, as writers
  int writers = 0;
  std::array<std::atomic<bool>, kLockKinds> isHeld{};     // what was waited for in vain
  std::array<std::atomic<Instant>, kLockKinds> looked{};  // at each line
  std::atomic<Instant> lookedForLeftovers{};

  int& admitted(AccessKind kind) { return kind == AccessKind::reading ? readers : writers; }
  bool hasRoom(AccessKind kind) { return admitted(kind) < (kind == AccessKind::reading ? 2 : 1); }
  static bool isTimeToLook(std::atomic<Instant>& last) {
    const auto now = std::chrono::steady_clock::now();
    auto before = last.load();
    return now - before >= kBetweenLooks && last.compare_exchange_strong(before, now);
  }
};

class DirectoryAccess::Directories {
 public:
  static Directories& shared() {
    // Never destroyed: accesses may go on while the process exits.
    static NeverDestroyed<Directories> directories;
    return *directories;
  }

  Directory& of(const std::string& path) {
    const std::lock_guard lock(mutex_);
    return directories_[path];
  }
  bool awaitTurn(Directory& directory, AccessKind kind, Clock::TimePoint end) {
    std::unique_lock lock(mutex_);
    const auto hasRoom = [&] { return directory.hasRoom(kind); };
    if (!hasRoom() && !Clock::current().waitUntil(lock, changed_, end, hasRoom)) return false;
    ++directory.admitted(kind);
    return true;
  }
  void leave(Directory& directory, AccessKind kind) {
    const std::lock_guard lock(mutex_);
    --directory.admitted(kind);
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::map<std::string, Directory> directories_;
};

DirectoryAccess::DirectoryAccess(std::string path, AccessKind kind)
    : path_(std::move(path)),
      kind_(kind),
      end_(Clock::current().now() + kPatience),
      state_(Directories::shared().of(path_)) {
  isAdmitted_ = Directories::shared().awaitTurn(state_, kind_, end_);
  if (!isAdmitted_) logGivingUp(path_, "busy for too long with other accesses of this process");
}

DirectoryAccess::~DirectoryAccess() {
  if (isAdmitted_) Directories::shared().leave(state_, kind_);
}

LockAnswer DirectoryAccess::wait(const Wanted& wanted) {
  auto& isHeld = state_.isHeld[static_cast<std::size_t>(wanted.kind)];
  auto answer = wanted.attempt();
  const bool waits = answer == LockAnswer::busy && !isHeld;
  for (Pauses pauses; waits && answer == LockAnswer::busy && Clock::current().now() < end_;) {
    pauses.next();
    answer = wanted.attempt();
  }
  const bool isInVain = answer == LockAnswer::busy;
  if (isHeld != isInVain && !isHeld.exchange(isInVain))
    logGivingUp(path_, "locked for too long by " + wanted.holder().value_or("another process"));
  return answer;
}

LockAnswer DirectoryAccess::waitInLine(const FileDescriptor& directory, const Wanted& wanted) {
  std::optional<Announcement> announcement;
  const auto attempt = [&] {
    const auto answer = wanted.attempt();
    if (answer == LockAnswer::busy && !announcement) announcement.emplace(directory, wanted.kind);
    return answer;
  };
  return wait({wanted.kind, attempt, wanted.holder});
}

bool DirectoryAccess::isTimeForLeftovers() {
  return Directory::isTimeToLook(state_.lookedForLeftovers);
}

void DirectoryAccess::renewPatience() {
  end_ = Clock::current().now() + kPatience;
}

void DirectoryAccess::holdBack(const FileDescriptor& directory, LockKind line) {
  auto& looked = state_.looked[static_cast<std::size_t>(line)];
  if (!Directory::isTimeToLook(looked) || !somebodyWaits(directory, line)) return;
  const auto end = std::chrono::steady_clock::now() + kCourtesy;
  for (Pauses pauses; somebodyWaits(directory, line) && std::chrono::steady_clock::now() < end;) {
    pauses.next();
  }
}

LockAnswer tryLock(const FileDescriptor& file, int operation) {
  if (retryScarce([&] { return ::flock(file.get(), operation | LOCK_NB); }) == 0) return LockAnswer::granted;
  return errno == EWOULDBLOCK ? LockAnswer::busy : LockAnswer::refused;
}

}  // namespace QXPlatform
