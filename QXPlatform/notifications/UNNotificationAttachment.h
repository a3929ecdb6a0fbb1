#pragma once

#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// A media file shown with a notification. Immutable; any thread.
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

  friend bool operator==(const UNNotificationAttachment&, const UNNotificationAttachment&) = default;

 private:
  UNNotificationAttachment(std::string identifier, URL url)
      : identifier_(std::move(identifier)), url_(std::move(url)) {}

  std::string identifier_;
  URL url_;
};

}  // namespace QXPlatform
