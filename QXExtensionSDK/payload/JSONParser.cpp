#include "QXExtensionSDK/payload/JSONParser.h"

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/JSON.h"

namespace QXExtensionSDK {

std::optional<std::string> JSONParser::jsonString(const QXPlatform::Dictionary& dictionary) const {
  auto text = QXPlatform::writeJSON(dictionary, QXPlatform::JSONStyle::pretty);
  if (!text) {
    Logger::service().error(LogCategory::serviceGeneral,
                            "Error converting dictionary to JSON: ", text.error());
    return std::nullopt;
  }
  Logger::service().debug(LogCategory::serviceGeneral, "Conversion from dictionary to JSON: ", *text);
  return *std::move(text);
}

std::optional<QXPlatform::Dictionary> JSONParser::dictionary(std::string_view jsonText) const {
  const auto parsed = QXPlatform::parseJSON(jsonText);
  if (!parsed) {
    Logger::service().error(LogCategory::serviceGeneral,
                            "Error converting JSON string to dictionary: ", parsed.error());
    return std::nullopt;
  }
  auto dictionary = parsed->dictionary();
  if (dictionary) {
    Logger::service().debug(LogCategory::serviceGeneral,
                            "Conversion from JSON string to dictionary: ", *dictionary);
  }
  return dictionary;
}

}  // namespace QXExtensionSDK
