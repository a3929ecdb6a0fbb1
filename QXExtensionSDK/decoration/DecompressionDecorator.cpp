#include "QXExtensionSDK/decoration/DecompressionDecorator.h"

#include <utility>

#include "QXExtensionSDK/payload/PayloadKeys.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"

namespace QXExtensionSDK {

DecompressionDecorator::DecompressionDecorator(const Logger& logger,
                                               std::unique_ptr<const DecompressionContext> context)
    : logger_(logger), context_(std::move(context)) {}

UserInfoChanges DecompressionDecorator::decorate(const QXPlatform::Dictionary& userInfo,
                                                 const QXPlatform::UNNotificationRequest& request) const {
  const QXPlatform::Value* field = userInfo.find(kCompressedRichFeaturesKey);
  if (field == nullptr) {
    logger_.debug(LogCategory::decompression, "Compressed field not present in user info");
    return std::nullopt;
  }
  const auto compressed = field->string();
  if (!compressed) {
    logger_.error(LogCategory::decompression, "Invalid compressed field data type in user info");
    return std::nullopt;
  }
  const auto strategy = context_->strategy(request);
  if (strategy == nullptr) {
    logger_.error(LogCategory::decompression, "Can't find decompression strategy");
    return std::nullopt;
  }
  const auto text = strategy->decompress(*compressed);
  if (!text) {
    logger_.error(LogCategory::decompression, "Decompression failure");
    return std::nullopt;
  }
  const auto richFeatures = VTQXUtility::dictionary(*text);
  if (!richFeatures) {
    logger_.error(LogCategory::decompression, "Can't convert decompressed string to dictionary");
    return std::nullopt;
  }
  logger_.debug(LogCategory::decompression, "Adding decompressed field");
  return QXPlatform::Dictionary{{kRichFeaturesKey, *richFeatures}, {kCompressedRichFeaturesKey, ""}};
}

}  // namespace QXExtensionSDK
