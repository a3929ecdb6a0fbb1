#include "QXPlatform/libraries/network/FileBody.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace QXPlatform {
namespace {

URLError cannotWrite(int number) {
  return {URLError::Code::cannotWriteFile,
          "the download cannot be written: " + std::generic_category().message(number)};
}

URLError tooLarge() {
  return {URLError::Code::badServerResponse, "the download is larger than 50 MB"};
}

}  // namespace

std::optional<URLError> FileBody::expect(std::size_t size) {
  return size > kLimit ? std::optional(tooLarge()) : std::nullopt;
}

void FileBody::discard() {
  if (file_ >= 0) close(std::exchange(file_, -1));
  if (!path_.empty()) unlink(path_.c_str());
  path_.clear();
  directory_.reset();
}

std::optional<URLError> FileBody::open() {
  if (file_ >= 0) return std::nullopt;
  file_ = directory_->createFile(path_);
  return file_ >= 0 ? std::nullopt : std::optional(cannotWrite(errno));
}

std::optional<URLError> FileBody::append(std::string_view bytes) {
  if (bytes.size() > kLimit - size_) return tooLarge();
  size_ += bytes.size();
  if (auto failed = open()) return failed;
  while (!bytes.empty()) {
    const ssize_t written = write(file_, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return cannotWrite(errno);
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return std::nullopt;
}

std::optional<URLError> FileBody::finish() {
  if (auto failed = open()) return failed;
  const int file = std::exchange(file_, -1);
  return close(file) == 0 ? std::nullopt : std::optional(cannotWrite(errno));
}

}  // namespace QXPlatform
