#pragma once

#include <QImage>
#include <QPainter>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "QXExtensionSDK/content/CarouselViewController.h"
#include "QXExtensionSDK/content/VTQXNotificationViewController.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/ui/ContentExtensionHost.h"

// A notification with a carousel, the address of each panel's picture as given by its number.
inline std::shared_ptr<const QXPlatform::UNNotificationRequest> carouselRequest(
    std::int64_t panels, const std::function<std::string(std::int64_t)>& address) {
  std::string items;
  for (std::int64_t i = 0; i < panels; ++i) {
    const std::string number = std::to_string(i);
    if (i > 0) items += ',';
    items += R"({"id":"p)";
    items += number;
    items += R"(","md":{"ul":")";
    items += address(i);
    items += R"(","at":{"tx":"A picture"}},"ti":{"tx":"Title of panel )";
    items += number;
    items +=
        R"(, which takes about a line"},"sti":{"tx":"And a subtitle that is somewhat longer than that"},)";
    items += R"("ac":[{"t":"2","ul":"https://example.com/offer"}]})";
  }
  const auto userInfo =
      QXPlatform::parseJSON(R"({"_sid":"VTQX","_m":"m","_rf":{"vt":{"t":"0","it":[)" + items + "]}}}");
  if (!userInfo) throw std::runtime_error(userInfo.error().message);
  QXPlatform::NotificationProperties properties;
  properties.userInfo = *userInfo->dictionary();
  return std::make_shared<QXPlatform::UNNotificationRequest>(QXPlatform::UNNotificationRequest{
      "request", std::make_shared<QXPlatform::UNNotificationContent>(std::move(properties))});
}

// A content extension of 360 points, and the pixels that it is drawn to.
class ContentStage {
 public:
  ContentStage(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request, double scale) {
    host_.deliver(request);
    const QXPlatform::Size size = host_.contentSize();
    pixels_ = QImage(QSize(static_cast<int>(size.width * scale), static_cast<int>(size.height * scale)),
                     QImage::Format_RGB32);
    pixels_.setDevicePixelRatio(scale);
  }

  void draw() {
    QPainter painter(&pixels_);
    host_.view().render(&painter);
  }
  QXPlatform::ContentExtensionHost& host() { return host_; }
  QXExtensionSDK::CarouselViewController& screen() {
    return dynamic_cast<QXExtensionSDK::CarouselViewController&>(*extension_->coordinatorVC());
  }

 private:
  static constexpr int kWidth = 360;

  std::shared_ptr<QXExtensionSDK::VTQXNotificationViewController> extension_ =
      std::make_shared<QXExtensionSDK::VTQXNotificationViewController>();
  QXPlatform::ContentExtensionHost host_{extension_, kWidth};
  QImage pixels_;
};
