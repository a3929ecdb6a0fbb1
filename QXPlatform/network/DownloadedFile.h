#pragma once

#include <memory>
#include <string>
#include <utility>

#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// Owns a file that a session of this process has downloaded and a completion has moved within its directory:
// the file is removed with the last owner. Any thread.
class DownloadedFile {
 public:
  // Shared by all who ask for one file; null for a file from anywhere else, which is nobody's to remove.
  static std::shared_ptr<DownloadedFile> owner(const URL& file);

  explicit DownloadedFile(std::string path) : path_(std::move(path)) {}
  ~DownloadedFile();
  DownloadedFile(const DownloadedFile&) = delete;
  DownloadedFile& operator=(const DownloadedFile&) = delete;

 private:
  const std::string path_;
};

}  // namespace QXPlatform
