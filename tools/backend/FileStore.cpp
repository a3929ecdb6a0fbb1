#include "tools/backend/FileStore.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "QXPlatform/foundation/ASCII.h"
#include "tools/backend/Panels.h"

namespace backend {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "/files/";

constexpr std::array<std::pair<std::string_view, std::string_view>, 12> kContentTypes{{
    {".png", "image/png"},
    {".jpg", "image/jpeg"},
    {".jpeg", "image/jpeg"},
    {".gif", "image/gif"},
    {".mp3", "audio/mpeg"},
    {".m4a", "audio/mp4"},
    {".wav", "audio/wav"},
    {".mp4", "video/mp4"},
    {".mpg", "video/mpeg"},
    {".json", "application/json"},
    {".html", "text/html"},
    {".txt", "text/plain; charset=utf-8"},
}};

std::string_view contentType(const fs::path& name) {
  const std::string extension = name.extension().string();
  for (const auto& [known, type] : kContentTypes) {
    if (QXPlatform::equalsIgnoringCase(known, extension)) return type;
  }
  return "application/octet-stream";
}

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    unsigned value = 0;
    const char* digits = text.data() + i + 1;
    if (text.size() - i < 3 || std::from_chars(digits, digits + 2, value, 16).ptr != digits + 2 ||
        value == 0) {
      return std::nullopt;
    }
    decoded += static_cast<char>(value);
    i += 2;
  }
  return decoded;
}

bool isWithin(const fs::path& directory, const fs::path& file) {
  const auto ends = std::mismatch(directory.begin(), directory.end(), file.begin(), file.end());
  return ends.first == directory.end();
}

Response failure(int status, std::string_view reason) {
  Response response;
  response.status = status;
  response.headers.emplace_back("Content-Type", "text/plain; charset=utf-8");
  response.body = std::string(reason) + "\n";
  return response;
}

Response file(const fs::path& name, std::string bytes) {
  Response response;
  response.headers.emplace_back("Content-Type", contentType(name));
  response.body = std::move(bytes);
  return response;
}

Response fromPanels(const std::string& name) {
  for (const Panel& panel : panels()) {
    if (panel.name == name) return file(name, std::string(panel.bytes));
  }
  return failure(404, "no such file");
}

}  // namespace

FileStore::FileStore(const std::optional<fs::path>& directory) {
  if (!directory) return;
  std::error_code error;
  root_ = fs::canonical(*directory, error);
  if (error || !fs::is_directory(*root_, error)) {
    throw std::runtime_error("no directory of files at " + directory->string());
  }
}

std::optional<Response> FileStore::answer(std::string_view path) const {
  if (!path.starts_with(kPrefix)) return std::nullopt;
  path.remove_prefix(kPrefix.size());
  const auto name = percentDecoded(path.substr(0, path.find('?')));
  if (!name) return failure(400, "malformed path");
  return root_ ? fromDirectory(*name) : fromPanels(*name);
}

Response FileStore::fromDirectory(const std::string& name) const {
  std::error_code error;
  // Resolved before it is compared, so that neither ".." nor a symbolic link leads outside.
  const fs::path resolved = fs::weakly_canonical(fs::path(root_->string() + "/" + name), error);
  if (error || !isWithin(*root_, resolved)) return failure(403, "outside the served directory");
  if (!fs::is_regular_file(resolved, error)) return failure(404, "no such file");
  std::ifstream stream(resolved, std::ios::binary);
  if (!stream) return failure(403, "not readable");
  return file(name, std::string(std::istreambuf_iterator<char>(stream), {}));
}

}  // namespace backend
