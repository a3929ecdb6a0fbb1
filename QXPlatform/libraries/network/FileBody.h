#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "QXPlatform/libraries/network/ResponseBody.h"
#include "QXPlatform/libraries/network/SessionDirectory.h"

namespace QXPlatform {

// Streams the answer into a new file of the session's directory, up to the size of the largest attachment
// that the platform shows.
class FileBody final : public ResponseBody {
 public:
  static constexpr std::size_t kLimit = std::size_t{50} << 20;

  explicit FileBody(std::shared_ptr<SessionDirectory> directory) : directory_(std::move(directory)) {}
  ~FileBody() override { discard(); }
  FileBody(const FileBody&) = delete;
  FileBody& operator=(const FileBody&) = delete;

  std::optional<URLError> expect(std::size_t size) override;
  std::optional<URLError> append(std::string_view bytes) override;
  std::optional<URLError> finish() override;

  // REQUIRES: finish() has been called without an error.
  URL url() const { return URL::file(path_); }
  // Removes the file, unless it has been moved away, and lets go of the directory.
  void discard();

 private:
  std::optional<URLError> open();

  std::shared_ptr<SessionDirectory> directory_;
  std::string path_;
  std::optional<FileDescriptor> file_;  // while it is written
  std::size_t size_ = 0;
};

}  // namespace QXPlatform
