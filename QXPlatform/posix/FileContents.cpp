#include "QXPlatform/files/FileContents.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/posix/FilePath.h"

namespace QXPlatform {

namespace {

// Without O_NONBLOCK, opening a pipe would wait for its other end.
constexpr int kOpenFlags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;

FileDescriptor open(const std::string& path, int flags) {
  return FileDescriptor(retryScarce([&] { return ::open(path.c_str(), flags | kOpenFlags, 0600); }));
}

// The file's size when it is a regular one.
std::optional<std::size_t> regularFileSize(const FileDescriptor& file) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return static_cast<std::size_t>(status.st_size);
}

}  // namespace

std::optional<Data> readContents(const URL& file) {
  const auto path = filePath(file);
  if (!path) return std::nullopt;
  const FileDescriptor descriptor = open(*path, O_RDONLY);
  if (!descriptor.valid()) return std::nullopt;
  const auto size = regularFileSize(descriptor);
  if (!size || *size > kMaxFileContents) return std::nullopt;

  // One byte more than expected, so that the end shows without growing. The size is but a hint: it may have
  // changed since.
  std::string bytes(*size + 1, '\0');
  std::size_t count = 0;
  while (true) {
    const auto read = retryInterrupted(
        [&] { return ::read(descriptor.get(), bytes.data() + count, bytes.size() - count); });
    if (read < 0) return std::nullopt;
    count += static_cast<std::size_t>(read);
    if (read == 0 || count == *size) break;
    if (count > kMaxFileContents) return std::nullopt;
    if (count == bytes.size()) bytes.resize(std::min(2 * count, kMaxFileContents + 1));
  }
  bytes.resize(count);
  return Data(std::move(bytes));
}

bool writeContents(std::string_view bytes, const URL& file) {
  const auto path = filePath(file);
  if (!path) return false;
  FileDescriptor descriptor = open(*path, O_WRONLY | O_CREAT);
  // Truncated only once it is known to be a regular file.
  if (!descriptor.valid() || !regularFileSize(descriptor)) return false;
  if (::ftruncate(descriptor.get(), 0) != 0) return false;
  while (!bytes.empty()) {
    const auto written =
        retryInterrupted([&] { return ::write(descriptor.get(), bytes.data(), bytes.size()); });
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return descriptor.close();
}

}  // namespace QXPlatform
