#include "QXPlatform/files/FileContents.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <utility>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/posix/FilePath.h"
#include "QXPlatform/posix/FileStatus.h"
#include "QXPlatform/posix/OpenFile.h"

namespace QXPlatform {

namespace {

// Without O_NONBLOCK, opening a pipe would wait for its other end.
constexpr int kOpenFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

std::optional<struct stat> regularFile(const FileDescriptor& file) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return status;
}

}  // namespace

Result<Data, ReadFailure> readContents(const URL& file, FileVersion* version) {
  const auto path = filePath(file);
  if (!path) return ReadFailure::absent;
  const FileDescriptor descriptor = openFile(*path, O_RDONLY | kOpenFlags);
  if (!descriptor.valid()) return errno == ENOENT ? ReadFailure::absent : ReadFailure::unreadable;
  const auto status = regularFile(descriptor);
  if (!status) return ReadFailure::unreadable;
  const auto size = static_cast<std::size_t>(status->st_size);
  if (size > kMaxFileContents) return ReadFailure::unreadable;
  if (version != nullptr) *version = versionOf(*status);

  // One byte more than expected, so that the end shows without growing. The size is but a hint: it may have
  // changed since.
  std::string bytes(size + 1, '\0');
  std::size_t count = 0;
  while (true) {
    const auto read = retryInterrupted(
        [&] { return ::read(descriptor.get(), bytes.data() + count, bytes.size() - count); });
    if (read < 0) return ReadFailure::unreadable;
    count += static_cast<std::size_t>(read);
    if (read == 0 || count == size) break;
    if (count > kMaxFileContents) return ReadFailure::unreadable;
    if (count == bytes.size()) bytes.resize(std::min(2 * count, kMaxFileContents + 1));
  }
  bytes.resize(count);
  return Data(std::move(bytes));
}

bool writeContents(std::string_view bytes, const URL& file) {
  const auto path = filePath(file);
  if (!path) return false;
  FileDescriptor descriptor = openFile(*path, O_WRONLY | O_CREAT | kOpenFlags);
  // Truncated only once it is known to be a regular file.
  const auto status = descriptor.valid() ? regularFile(descriptor) : std::nullopt;
  if (!status || (status->st_size > 0 && ::ftruncate(descriptor.get(), 0) != 0)) return false;
  return writeContents(bytes, descriptor) && descriptor.close();
}

bool writeContents(std::string_view bytes, const FileDescriptor& file) {
  while (!bytes.empty()) {
    const auto written = retryInterrupted([&] { return ::write(file.get(), bytes.data(), bytes.size()); });
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace QXPlatform
