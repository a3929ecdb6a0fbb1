#include "AppGroupSDK/records/JSONString.h"

#include "QXPlatform/foundation/JSON.h"

namespace AppGroupSDK {

std::optional<std::string> jsonString(const QXPlatform::Dictionary& dictionary) {
  auto text = QXPlatform::writeJSON(dictionary, QXPlatform::JSONStyle::pretty);
  return text ? std::optional(*std::move(text)) : std::nullopt;
}

}  // namespace AppGroupSDK
