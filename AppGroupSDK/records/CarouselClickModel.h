#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/foundation/RawValues.h"

namespace AppGroupSDK {

// What the host application is to do about a click.
enum class CarouselActionType : std::int64_t {
  openApp = 0,
  openDeepLink = 1,
  openWebUrl = 2,
  openCloudPage = 3
};
constexpr auto rawValues(QXPlatform::RawValuesOf<CarouselActionType>) {
  return std::to_array({CarouselActionType::openApp, CarouselActionType::openDeepLink,
                        CarouselActionType::openWebUrl, CarouselActionType::openCloudPage});
}

// The last click on a carousel. Written by the content extension for the host application.
class CarouselClickModel {
 public:
  static constexpr std::string_view dataStoreFileName() { return "com.veltro.qx.extensionsdk.carousel.data"; }

  // `notificationUniqueId`: from CarouselRichFeatureMetaUtils. `clickIndex`: of the panel, from 0.
  CarouselClickModel(std::string notificationUniqueId, bool isCarouselClick, std::int64_t clickIndex,
                     CarouselActionType actionType, std::optional<std::string> actionUrl, std::string panelId)
      : notificationUniqueId_(std::move(notificationUniqueId)),
        isCarouselClick_(isCarouselClick),
        clickIndex_(clickIndex),
        actionType_(actionType),
        actionUrl_(std::move(actionUrl)),
        panelId_(std::move(panelId)) {}

  const std::string& notificationUniqueId() const { return notificationUniqueId_; }
  bool isCarouselClick() const { return isCarouselClick_; }
  std::int64_t clickIndex() const { return clickIndex_; }
  CarouselActionType actionType() const { return actionType_; }
  const std::optional<std::string>& actionUrl() const { return actionUrl_; }
  const std::string& panelId() const { return panelId_; }

  friend bool operator==(const CarouselClickModel&, const CarouselClickModel&) = default;

 private:
  friend QXPlatform::JSONRecordAccess;
  CarouselClickModel() = default;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(
        QXPlatform::jsonField("notificationUniqueId", &CarouselClickModel::notificationUniqueId_),
        QXPlatform::jsonField("isCarouselClick", &CarouselClickModel::isCarouselClick_),
        QXPlatform::jsonField("clickIndex", &CarouselClickModel::clickIndex_),
        QXPlatform::jsonField("actionType", &CarouselClickModel::actionType_),
        QXPlatform::jsonField("actionUrl", &CarouselClickModel::actionUrl_),
        QXPlatform::jsonField("panelId", &CarouselClickModel::panelId_));
  }

  std::string notificationUniqueId_;
  bool isCarouselClick_ = false;
  std::int64_t clickIndex_ = 0;
  CarouselActionType actionType_ = CarouselActionType::openApp;
  std::optional<std::string> actionUrl_;
  std::string panelId_;
};

}  // namespace AppGroupSDK
