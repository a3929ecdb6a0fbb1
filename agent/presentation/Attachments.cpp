#include "agent/presentation/Attachments.h"

#include <cstdlib>
#include <optional>
#include <string>
#include <system_error>

#include "QXPlatform/foundation/URL.h"

namespace QXAgent {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Value;

std::optional<std::filesystem::path> fileOf(const Value& attachment) {
  const auto url = QXPlatform::URL::parse(attachment["url"].string().value_or(""));
  if (!url || !url->isFileURL()) return std::nullopt;
  return std::filesystem::path(url->filePath()).lexically_normal();
}

bool liesBelow(const std::filesystem::path& directory, const std::filesystem::path& file) {
  const auto relative = file.lexically_relative(directory);
  return !relative.empty() && relative != "." && *relative.begin() != "..";
}

// Where a file below the directory is; nothing when a link leads elsewhere, or it is no file.
std::optional<std::filesystem::path> placeBelow(const std::filesystem::path& directory,
                                                const std::filesystem::path& file) {
  std::error_code error;
  const auto place = std::filesystem::canonical(file.parent_path(), error) / file.filename();
  if (error || !std::filesystem::is_regular_file(std::filesystem::symlink_status(place, error)))
    return std::nullopt;
  const auto real = std::filesystem::canonical(directory, error);
  return !error && liesBelow(real, place) ? std::optional(place) : std::nullopt;
}

bool moveOut(const std::filesystem::path& directory, const std::filesystem::path& file,
             const std::filesystem::path& to) {
  const auto place = placeBelow(directory, file);
  std::error_code error;
  if (place) std::filesystem::rename(*place, to, error);
  return place && !error;
}

}  // namespace

Value withoutAttachments(const Value& push) {
  const auto content = push["content"].dictionary();
  // What travels over the air can name none, and is passed on untouched.
  if (push.find("aps") != nullptr || !content || !content->contains("attachments")) return push;
  return push.dictionary()->setting("content", content->removing("attachments"));
}

Dictionary adoptAttachments(const Dictionary& content, std::int64_t number,
                            const std::filesystem::path& temporary, const std::filesystem::path& files) {
  if (!content.contains("attachments")) return content;
  std::vector<Value> adopted;
  for (const Value& attachment : content["attachments"].elements()) {
    const auto file = fileOf(attachment);
    if (!file || !liesBelow(temporary, *file)) {
      adopted.push_back(attachment);
      continue;
    }
    const auto target =
        files / (std::to_string(number) + "-" + std::to_string(adopted.size()) + file->extension().native());
    if (moveOut(temporary, *file, target))
      adopted.emplace_back(
          attachment.dictionary()->setting("url", QXPlatform::URL::file(target.native()).absoluteString()));
  }
  return content.setting("attachments", adopted);
}

std::int64_t pushOfFile(const std::filesystem::path& file) {
  return std::strtoll(file.filename().c_str(), nullptr, 10);
}

std::vector<std::filesystem::path> adoptedAttachments(const Dictionary& content, std::int64_t number,
                                                      const std::filesystem::path& files) {
  std::vector<std::filesystem::path> found;
  for (const Value& attachment : content["attachments"].elements()) {
    if (const auto file = fileOf(attachment);
        file && file->parent_path() == files && pushOfFile(*file) == number)
      found.push_back(*file);
  }
  return found;
}

}  // namespace QXAgent
