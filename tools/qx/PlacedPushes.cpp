#include "tools/qx/PlacedPushes.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

namespace qx {

namespace {

std::string shownName(const std::string& file) {
  return file == "-" ? "standard input" : file;
}

// What is there as a name alone, such as a link that leads nowhere, says why when it is opened.
bool mayHoldPushes(const std::filesystem::directory_entry& entry) {
  const auto extension = entry.path().extension();
  std::error_code ignored;
  return (extension == ".json" || extension == ".ndjson") &&
         (entry.is_regular_file(ignored) || !entry.exists(ignored));
}

PlacedPush unreadable(const std::string& file, const std::string& reason) {
  return {{{}, 1, "", QXPlatform::Error{reason}}, {.file = file, .name = shownName(file)}};
}

}  // namespace

PlacedPushes::PlacedPushes(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) {
      std::ranges::move(partsOf(file), std::back_inserter(parts_));
    } else {
      parts_.push_back({file, ""});
    }
  }
}

std::optional<PlacedPush> PlacedPushes::next() {
  while (!following_) {
    if (begun_ == parts_.size()) return std::nullopt;
    const Part& part = parts_[begun_++];
    if (!part.unreadable.empty()) return unreadable(part.path, part.unreadable);
    begin(part);
    if (!following_) return unreadable(part.path, "no push");
  }
  QXPlatform::PushText push = *std::exchange(following_, source_->next());
  isOneOfSeveral_ = isOneOfSeveral_ || following_;
  const std::string& file = parts_[begun_ - 1].path;
  PushPlace place{file, push.line, isOneOfSeveral_, shownName(file)};
  if (isOneOfSeveral_) place.name += ": line " + std::to_string(push.line);
  return PlacedPush{std::move(push), std::move(place)};
}

void PlacedPushes::begin(const Part& part) {
  source_.emplace(std::vector{part.path});
  isOneOfSeveral_ = false;
  following_ = source_->next();
}

// In the order of their names, below the directory too.
std::vector<PlacedPushes::Part> PlacedPushes::partsOf(const std::string& directory) {
  std::vector<Part> parts;
  listBelow(directory, parts);
  std::ranges::sort(parts, {}, &Part::path);
  if (parts.empty()) parts.push_back({directory, "no .json and no .ndjson file"});
  return parts;
}

void PlacedPushes::listBelow(const std::string& directory, std::vector<Part>& parts) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (!entry->is_symlink(ignored) && entry->is_directory(ignored)) {
      listBelow(entry->path().string(), parts);
    } else if (mayHoldPushes(*entry)) {
      parts.push_back({entry->path().string(), ""});
    }
  }
  if (error) parts.push_back({directory, error.message()});
}

}  // namespace qx
