#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "QXPlatform/foundation/JSONCoding.h"

namespace AppGroupSDK {

// Where receipts go and in whose name. Written by the host application.
class AppDeviceInfo {
 public:
  static constexpr std::string_view dataStoreFileName() {
    return "com.veltro.qx.extensionsdk.appDeviceInfo.data";
  }

  AppDeviceInfo(std::string baseUrl, std::string applicationId, std::string deviceId, std::string accessToken,
                std::string qxsdkVersion, std::optional<std::string> subscriberToken,
                std::optional<std::string> tenantId, std::optional<std::string> sessionId)
      : baseUrl_(std::move(baseUrl)),
        applicationId_(std::move(applicationId)),
        deviceId_(std::move(deviceId)),
        accessToken_(std::move(accessToken)),
        qxsdkVersion_(std::move(qxsdkVersion)),
        subscriberToken_(std::move(subscriberToken)),
        tenantId_(std::move(tenantId)),
        sessionId_(std::move(sessionId)) {}

  const std::string& baseUrl() const { return baseUrl_; }
  const std::string& applicationId() const { return applicationId_; }
  const std::string& deviceId() const { return deviceId_; }
  const std::string& accessToken() const { return accessToken_; }
  void setAccessToken(std::string accessToken) { accessToken_ = std::move(accessToken); }
  const std::string& qxsdkVersion() const { return qxsdkVersion_; }
  const std::optional<std::string>& subscriberToken() const { return subscriberToken_; }
  const std::optional<std::string>& tenantId() const { return tenantId_; }
  const std::optional<std::string>& sessionId() const { return sessionId_; }

  friend bool operator==(const AppDeviceInfo&, const AppDeviceInfo&) = default;

 private:
  friend QXPlatform::JSONRecordAccess;
  AppDeviceInfo() = default;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("baseUrl", &AppDeviceInfo::baseUrl_),
                                  QXPlatform::jsonField("applicationId", &AppDeviceInfo::applicationId_),
                                  QXPlatform::jsonField("deviceId", &AppDeviceInfo::deviceId_),
                                  QXPlatform::jsonField("accessToken", &AppDeviceInfo::accessToken_),
                                  QXPlatform::jsonField("qxsdkVersion", &AppDeviceInfo::qxsdkVersion_),
                                  QXPlatform::jsonField("subscriberToken", &AppDeviceInfo::subscriberToken_),
                                  QXPlatform::jsonField("tenantId", &AppDeviceInfo::tenantId_),
                                  QXPlatform::jsonField("sessionId", &AppDeviceInfo::sessionId_));
  }

  std::string baseUrl_;
  std::string applicationId_;
  std::string deviceId_;
  std::string accessToken_;
  std::string qxsdkVersion_;
  std::optional<std::string> subscriberToken_;
  std::optional<std::string> tenantId_;
  std::optional<std::string> sessionId_;
};

}  // namespace AppGroupSDK
