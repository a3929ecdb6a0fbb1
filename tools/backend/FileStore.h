#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "tools/backend/HTTPMessages.h"

namespace backend {

// The files served under /files/: those of a directory, or the built-in panels. Immutable; any thread.
class FileStore {
 public:
  // Throws std::runtime_error when the directory cannot be read.
  explicit FileStore(const std::optional<std::filesystem::path>& directory);

  // Nothing for a path outside /files/. 404 for a file that is not there, 403 for one outside the directory.
  std::optional<Response> answer(std::string_view path) const;

 private:
  Response fromDirectory(const std::string& name) const;

  std::optional<std::filesystem::path> root_;
};

}  // namespace backend
