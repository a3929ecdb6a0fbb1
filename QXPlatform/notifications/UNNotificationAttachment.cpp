#include "QXPlatform/notifications/UNNotificationAttachment.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/images/ImageFormat.h"

namespace QXPlatform {
namespace {

struct MediaKind {
  std::string_view name;
  bool isImage;
  std::uintmax_t mostMegabytes;
  std::array<std::string_view, 6> extensions;
};

constexpr std::array kMediaKinds{
    MediaKind{"image", true, 10, {".jpg", ".jpeg", ".png", ".gif"}},
    MediaKind{"audio", false, 5, {".aif", ".aiff", ".wav", ".mp3", ".m4a"}},
    MediaKind{"video", false, 50, {".mpg", ".mpeg", ".mp4", ".m4v", ".avi"}},
};

constexpr std::uintmax_t kBytesPerMegabyte = std::uintmax_t{1024} * 1024;

const MediaKind* mediaKindOf(const std::filesystem::path& path) {
  const std::string extension = lowercased(path.extension().native());
  if (extension.empty()) return nullptr;
  const auto* kind = std::ranges::find_if(kMediaKinds, [&](const MediaKind& each) {
    return std::ranges::find(each.extensions, extension) != each.extensions.end();
  });
  return kind == kMediaKinds.end() ? nullptr : kind;
}

// An error page comes under an image's name as easily as an image does.
bool beginsAsImage(const std::filesystem::path& path) {
  std::array<char, 8> start{};
  std::ifstream file(path, std::ios::binary);
  file.read(start.data(), start.size());
  const auto format = imageFormatOf({start.data(), static_cast<std::size_t>(file.gcount())});
  return format == ImageFormat::png || format == ImageFormat::jpeg || format == ImageFormat::gif;
}

// Why the file cannot be shown; empty when it can.
std::string obstacle(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::symlink_status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) return "the file does not exist";
  if (status.type() == std::filesystem::file_type::none) return error.message();
  if (status.type() != std::filesystem::file_type::regular) return "it is not a regular file";
  const MediaKind* const kind = mediaKindOf(path);
  if (kind == nullptr) return "its type is not one that can be shown";
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) return error.message();
  if (size == 0) return "the file is empty";
  if (size > kind->mostMegabytes * kBytesPerMegabyte) {
    return "it is larger than the " + std::to_string(kind->mostMegabytes) + " MB allowed for " +
           std::string(kind->name);
  }
  return kind->isImage && !beginsAsImage(path) ? "it is not an image" : "";
}

}  // namespace

Result<UNNotificationAttachment> UNNotificationAttachment::make(std::string identifier, const URL& file) {
  if (!file.isFileURL()) return Error{"Attachment is not a file URL"};
  const std::filesystem::path path = file.filePath();
  const std::string reason = obstacle(path);
  if (!reason.empty()) return Error{"Attachment \"" + path.filename().string() + "\" refused: " + reason};
  return UNNotificationAttachment(std::move(identifier), file);
}

Result<UNNotificationAttachment> UNNotificationAttachment::movedTo(AttachmentStore& store) const {
  auto moved = store.take(url_);
  if (!moved) return moved.error();
  return UNNotificationAttachment(identifier_, *std::move(moved));
}

bool UNNotificationAttachment::showsTypeOf(std::string_view fileName) {
  return mediaKindOf(fileName) != nullptr;
}

}  // namespace QXPlatform
