#include "tools/qx/carousel/CarouselPush.h"

#include <memory>
#include <utility>

#include "QXExtensionSDK/decoration/DecompressionDecorator.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "tools/qx/PushFiles.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;
using Request = std::shared_ptr<const QXPlatform::UNNotificationRequest>;

Request inflated(Request request) {
  using namespace QXExtensionSDK;
  if (request->content == nullptr || !VTQXUtility::isVTQXPushNotification(*request)) return request;
  QXPlatform::NotificationProperties properties = request->content->snapshot();
  if (!properties.userInfo.contains("$_rf")) return request;
  const Logger& logger = Logger::service();
  const DecompressionDecorator decorator(logger, std::make_unique<ConcreteDecompressionContext>(logger));
  const auto changes = decorator.decorate(properties.userInfo, *request);
  if (!changes) return request;
  properties.userInfo = properties.userInfo.merging(*changes);
  return std::make_shared<QXPlatform::UNNotificationRequest>(QXPlatform::UNNotificationRequest{
      request->identifier, std::make_shared<QXPlatform::UNNotificationContent>(std::move(properties))});
}

}  // namespace

Result<Dictionary> carouselRequest(std::string_view push) {
  const auto parsed = QXPlatform::parseJSON(push);
  if (!parsed) return parsed.error();
  const auto request = QXPlatform::notificationRequestFromJSON(*parsed);
  if (!request) return request.error();
  return QXPlatform::notificationRequestToJSON(*inflated(*request));
}

Result<Dictionary> readCarouselRequest(const std::string& file) {
  PushFiles files({file});
  const auto push = files.next();
  if (!push) return Error{file + ": no push"};
  if (push->unreadable) return *push->unreadable;
  auto request = carouselRequest(push->text);
  if (!request) return Error{file + ": " + request.error().message};
  // Standard input may stay open.
  if (file != "-" && files.next()) return Error{file + ": several pushes, and one can be shown"};
  return request;
}

}  // namespace qx
