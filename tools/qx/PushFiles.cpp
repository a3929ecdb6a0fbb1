#include "tools/qx/PushFiles.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <utility>

namespace qx {

PushFiles::PushFiles(std::vector<std::string> names)
    : names_(names.empty() ? std::vector<std::string>{"-"} : std::move(names)) {}

std::optional<platform::PushText> PushFiles::next() {
  for (;;) {
    if (lines_ != nullptr) {
      if (auto push = lines_->next()) return push;
      lines_.reset();
    }
    if (nextName_ == names_.size()) return std::nullopt;
    if (auto push = open(names_[nextName_++])) return push;
  }
}

// The whole file's push; nothing when the file holds lines, which then come next.
std::optional<platform::PushText> PushFiles::open(const std::string& name) {
  const std::string shownName = names_.size() > 1 ? name : "";
  if (name == "-") {
    lines_ = std::make_unique<platform::PushLineSource>(std::cin, shownName);
    return std::nullopt;
  }
  file_ = std::ifstream(name, std::ios::binary);
  const auto unreadable = [&](const std::string& reason) {
    return platform::PushText{{}, 1, shownName, platform::Error{name + ": " + reason}};
  };
  if (!file_) return unreadable(std::strerror(errno));
  if (std::filesystem::path(name).extension() == ".ndjson") {
    lines_ = std::make_unique<platform::PushLineSource>(file_, shownName);
    return std::nullopt;
  }
  std::string text(platform::kLongestPush + 1, '\0');
  file_.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (file_.bad()) return unreadable("cannot be read");
  text.resize(static_cast<std::size_t>(file_.gcount()));
  if (text.size() > platform::kLongestPush) return unreadable("a push of more than 4 MiB");
  return platform::PushText{std::move(text), 1, shownName, std::nullopt};
}

}  // namespace qx
