#include "QXExtensionSDK/payload/JSONConvertible.h"

#include "QXPlatform/foundation/JSON.h"

namespace QXExtensionSDK {

bool JSONConvertible::isConvertible(const QXPlatform::Dictionary& dictionary, const Logger& logger,
                                    LogCategory category) const {
  if (QXPlatform::isValidJSONObject(dictionary)) return true;
  logger.error(category, "Dictionary is not valid json convertible object");
  return false;
}

std::optional<std::string> JSONConvertible::jsonString(const QXPlatform::Dictionary& dictionary,
                                                       const Logger& logger, LogCategory category) const {
  if (!isConvertible(dictionary, logger, category)) return std::nullopt;
  auto text = QXPlatform::writeJSON(dictionary, QXPlatform::JSONStyle::pretty);
  if (!text) {
    logger.error(category, "Can't convert dictionary to data object");
    return std::nullopt;
  }
  return *std::move(text);
}

}  // namespace QXExtensionSDK
