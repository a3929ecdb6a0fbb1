#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"

#include <string_view>
#include <utility>

#include "QXExtensionSDK/payload/PayloadKeys.h"
#include "QXExtensionSDK/payload/ViewTemplateCheck.h"

namespace QXExtensionSDK {

namespace {

std::optional<QXPlatform::Dictionary> findRichFeatures(const QXPlatform::UNNotificationRequest& request) {
  if (request.content == nullptr) return std::nullopt;
  return request.content->userInfo()[kRichFeaturesKey].dictionary();
}

}  // namespace

std::optional<CarouselModel> PayloadCarouselModelParser::parse(
    const QXPlatform::UNNotificationRequest& request) const {
  const auto refuse = [&](std::string_view message) {
    logger_.error(logger_.generalCategory(), message);
    return std::nullopt;
  };
  if (checkViewTemplate(request, logger_) != ViewTemplateType::carousel) {
    return refuse("Invalid view template type in parser");
  }
  const auto richFeatures = findRichFeatures(request);
  if (!richFeatures) return refuse("Rich features payload missing while parsing");
  // A tree that has a JSON text is decoded as it stands: the text would always be UTF-8, and would only have
  // to be parsed into the same tree.
  if (!isConvertible(*richFeatures, logger_, logger_.generalCategory())) {
    return refuse("Payload can't be converted to JSON string");
  }
  auto model = decode(*richFeatures);
  if (!model) return refuse("Json parsing into model failed");
  return *std::move(model);
}

QXPlatform::Result<CarouselModel, QXPlatform::DecodingError> PayloadCarouselModelParser::decode(
    const QXPlatform::Dictionary& richFeatures) {
  return QXPlatform::decodeValue<CarouselModel>(richFeatures, "/_rf");
}

}  // namespace QXExtensionSDK
