#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/URL.h"
#include "QXPlatform/network/DownloadedFile.h"
#include "QXPlatform/notifications/AttachmentStore.h"

namespace QXPlatform {

// A media file shown with a notification. Immutable; any thread. A download of this process's is removed with
// the last attachment that shows it, unless it is moved to a store; a file of the host's own is left alone.
class UNNotificationAttachment {
 public:
  // Fails, saying why, unless `file` is a file URL of an existing, non-empty file of a type that the platform
  // shows, told by its extension, and within that type's size (image 10 MB, audio 5 MB, video 50 MB). An
  // image must begin as a JPEG, PNG or GIF does, whichever of them its extension says.
  static Result<UNNotificationAttachment> make(std::string identifier, const URL& file);

  // Whether the file name's extension is that of a type that the platform shows, in either letter case.
  static bool showsTypeOf(std::string_view fileName);

  const std::string& identifier() const { return identifier_; }
  const URL& url() const { return url_; }

  // Whether the file goes with its attachments.
  bool isDownload() const { return download_ != nullptr; }
  // The same attachment with its file in the store.
  Result<UNNotificationAttachment> movedTo(AttachmentStore& store) const;

  friend bool operator==(const UNNotificationAttachment&, const UNNotificationAttachment&) = default;

 private:
  UNNotificationAttachment(std::string identifier, URL url)
      : identifier_(std::move(identifier)), url_(std::move(url)), download_(DownloadedFile::owner(url_)) {}

  std::string identifier_;
  URL url_;
  std::shared_ptr<DownloadedFile> download_;
};

}  // namespace QXPlatform
