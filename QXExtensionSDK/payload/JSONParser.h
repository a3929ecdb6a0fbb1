#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

// Dictionary to JSON text and back, for the service extension. Logs what it did, at debug level with the text
// itself, so it is not for text that must stay out of logs. Any thread.
class JSONParser {
 public:
  // Pretty-printed.
  std::optional<std::string> jsonString(const QXPlatform::Dictionary& dictionary) const;
  // Nothing unless the text is a JSON object.
  std::optional<QXPlatform::Dictionary> dictionary(std::string_view jsonText) const;
};

}  // namespace QXExtensionSDK
