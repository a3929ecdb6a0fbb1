#include "QXPlatform/network/DownloadedFile.h"

#include <unistd.h>

#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>

#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXPlatform/libraries/network/DownloadDirectory.h"

namespace QXPlatform {
namespace {

struct Owners {
  std::mutex mutex;
  std::unordered_map<std::string, std::weak_ptr<DownloadedFile>> byPath;  // guarded by mutex
};

Owners& owners() {
  // Never destroyed: threads may still load while the process exits.
  static NeverDestroyed<Owners> shared;
  return *shared;
}

}  // namespace

std::shared_ptr<DownloadedFile> DownloadedFile::owner(const URL& file) {
  if (!file.isFileURL()) return nullptr;
  std::string path = file.filePath();
  if (!DownloadDirectory::shared().contains(path)) return nullptr;
  const std::lock_guard lock(owners().mutex);
  auto& owner = owners().byPath[path];
  auto shared = owner.lock();
  if (shared == nullptr) owner = shared = std::make_shared<DownloadedFile>(std::move(path));
  return shared;
}

// Under the lock, so that a file that has come to stand there since is not taken for this one.
DownloadedFile::~DownloadedFile() {
  const std::lock_guard lock(owners().mutex);
  const auto entry = owners().byPath.find(path_);
  if (entry == owners().byPath.end() || !entry->second.expired()) return;
  unlink(path_.c_str());
  owners().byPath.erase(entry);
  const std::size_t end = path_.rfind('/');
  rmdir(path_.substr(0, end).c_str());  // only if nothing else is left in it
}

}  // namespace QXPlatform
