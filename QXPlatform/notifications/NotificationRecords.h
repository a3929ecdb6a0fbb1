#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/foundation/Value.h"

namespace QXPlatform {

// A full request as its JSON has it, which notificationRequestFromJSON() reads.

struct AttachmentRecord {
  std::optional<std::string> identifier;
  std::string url;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(jsonField("identifier", &AttachmentRecord::identifier),
                                  jsonField("url", &AttachmentRecord::url));
  }
};

struct ContentRecord {
  std::optional<std::string> title;
  std::optional<std::string> subtitle;
  std::optional<std::string> body;
  std::optional<std::int64_t> badge;
  std::optional<std::string> sound;
  std::optional<Dictionary> userInfo;
  std::optional<std::vector<AttachmentRecord>> attachments;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(
        jsonField("title", &ContentRecord::title), jsonField("subtitle", &ContentRecord::subtitle),
        jsonField("body", &ContentRecord::body), jsonField("badge", &ContentRecord::badge),
        jsonField("sound", &ContentRecord::sound), jsonField("userInfo", &ContentRecord::userInfo),
        jsonField("attachments", &ContentRecord::attachments));
  }
};

struct RequestRecord {
  std::optional<std::string> identifier;
  ContentRecord content;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(jsonField("identifier", &RequestRecord::identifier),
                                  jsonField("content", &RequestRecord::content));
  }
};

}  // namespace QXPlatform
