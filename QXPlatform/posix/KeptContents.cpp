#include "QXPlatform/files/KeptContents.h"

#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>

#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXPlatform/posix/FilePath.h"
#include "QXPlatform/posix/StagingName.h"

namespace QXPlatform {

namespace {

constexpr std::size_t kMostFiles = 16;
constexpr std::size_t kMostBytes = 4096;
// How long a change may go on having the same time as the one before: some milliseconds where times have
// fractions, else a second or two.
constexpr std::chrono::milliseconds kCoarsest{2000};
constexpr std::chrono::milliseconds kCoarse{100};

// Which state of which file. The time of change moves with every write, rename and change of permissions, and
// no program can set it.
struct Identity {
  dev_t device;
  ino_t number;
  off_t size;
  timespec changed;

  friend bool operator==(const Identity& left, const Identity& right) {
    return left.device == right.device && left.number == right.number && left.size == right.size &&
           left.changed.tv_sec == right.changed.tv_sec && left.changed.tv_nsec == right.changed.tv_nsec;
  }
};

bool mayChangeUnseen(const timespec& changed) {
  const std::chrono::nanoseconds time =
      std::chrono::seconds(changed.tv_sec) + std::chrono::nanoseconds(changed.tv_nsec);
  const auto age = std::chrono::system_clock::now().time_since_epoch() - time;
  return age < (changed.tv_nsec == 0 ? kCoarsest : kCoarse);
}

struct Looked {
  bool exists;
  std::optional<Identity> identity;  // of a regular file
};

Looked look(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return {errno != ENOENT, std::nullopt};
  if (!S_ISREG(status.st_mode)) return {true, std::nullopt};
  return {true, Identity{status.st_dev, status.st_ino, status.st_size, status.st_ctim}};
}

class KeptFiles {
 public:
  static KeptFiles& shared() {
    static NeverDestroyed<KeptFiles> files;
    return *files;
  }

  std::optional<Data> find(const std::string& path, const Identity& identity) {
    const std::lock_guard lock(mutex_);
    const auto kept = files_.find(path);
    if (kept == files_.end() || !(kept->second.identity == identity)) return std::nullopt;
    return kept->second.contents;
  }

  void keep(const std::string& path, const Identity& identity, const Data& contents) {
    const std::lock_guard lock(mutex_);
    // A process reads the same few files all its life.
    if (files_.size() >= kMostFiles && !files_.contains(path)) files_.clear();
    files_.insert_or_assign(path, Kept{identity, contents});
  }

 private:
  struct Kept {
    Identity identity;
    Data contents;
  };

  std::mutex mutex_;
  std::map<std::string, Kept> files_;  // guarded by mutex_
};

}  // namespace

std::optional<KnownContents> knownContents(const URL& file) {
  const auto path = filePath(file);
  if (!path) return std::nullopt;
  const std::string staging = path->substr(0, path->rfind('/') + 1) + kStagingName;
  if (look(staging).exists) return std::nullopt;
  const Looked found = look(*path);
  if (!found.exists) return KnownContents{};
  auto contents = found.identity ? KeptFiles::shared().find(*path, *found.identity) : std::nullopt;
  return contents ? std::optional(KnownContents{std::move(contents)}) : std::nullopt;
}

void keepContents(const URL& file, const Data& contents) {
  const auto path = filePath(file);
  if (!path || contents.size() > kMostBytes) return;
  const auto identity = look(*path).identity;
  if (identity && !mayChangeUnseen(identity->changed)) KeptFiles::shared().keep(*path, *identity, contents);
}

}  // namespace QXPlatform
