#include "QXPlatform/libraries/network/FileBody.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace QXPlatform {
namespace {

URLError cannotWrite(const std::string& reason) {
  return {URLError::Code::cannotWriteFile, "the download cannot be written: " + reason};
}

URLError lastError() {
  return cannotWrite(std::generic_category().message(errno));
}

URLError tooLarge() {
  return {URLError::Code::badServerResponse, "the download is larger than 50 MB"};
}

}  // namespace

std::optional<URLError> FileBody::expect(std::size_t size) {
  return size > kLimit ? std::optional(tooLarge()) : std::nullopt;
}

void FileBody::discard() {
  file_.reset();
  if (!path_.empty()) unlink(path_.c_str());
  path_.clear();
  directory_.reset();
}

std::optional<URLError> FileBody::open() {
  if (file_) return std::nullopt;
  auto created = directory_->createFile();
  if (!created) return cannotWrite(created.error().message);
  path_ = std::move(created.value().path);
  file_.emplace(std::move(created.value().descriptor));
  return std::nullopt;
}

std::optional<URLError> FileBody::append(std::string_view bytes) {
  if (bytes.size() > kLimit - size_) return tooLarge();
  size_ += bytes.size();
  if (auto failed = open()) return failed;
  while (!bytes.empty()) {
    const ssize_t written = write(file_->get(), bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return lastError();
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return std::nullopt;
}

std::optional<URLError> FileBody::finish() {
  if (auto failed = open()) return failed;
  const bool isWritten = file_->close();
  file_.reset();
  return isWritten ? std::nullopt : std::optional(lastError());
}

}  // namespace QXPlatform
