#include "AppGroupSDK/records/JSONString.h"

#include "platform/foundation/JSON.h"

namespace AppGroupSDK {

std::optional<std::string> jsonString(const platform::Dictionary& dictionary) {
  auto text = platform::writeJSON(dictionary, platform::JSONStyle::pretty);
  return text ? std::optional(*std::move(text)) : std::nullopt;
}

}  // namespace AppGroupSDK
