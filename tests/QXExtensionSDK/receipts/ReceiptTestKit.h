#pragma once

#include "AppGroupSDK/AppGroupSDK.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptsPNStore.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/JSON.h"
#include "tests/AppGroupSDK/HostBundle.h"
#include "tests/QXExtensionSDK/ServiceTestKit.h"
#include "tools/backend/LoopbackServer.h"

namespace QXExtensionSDK {

using AppGroupSDK::DeliveryReceiptPNModel;
using AppGroupSDK::ExtensionModuleName;
using AppGroupSDK::PNStatus;

inline constexpr auto kQXE = ExtensionModuleName::quorixEngagement;
inline constexpr auto kMAM = ExtensionModuleName::mobileAppMessaging;

// The values that must not be seen by anybody but the back end.
inline const std::vector<std::string> kSecrets{"access-secret", "subscriber-secret", "tenant-secret",
                                               "mam-app-secret", "session-secret"};

inline std::string appIdOf(ExtensionModuleName module) {
  return module == kMAM ? "mam-app-secret" : "qxe-app";
}

// A host application that has set everything up for receipts of both modules.
class ReceiptHost {
 public:
  explicit ReceiptHost(const std::string& baseUrl) {
    setDevice(baseUrl);
    setFeature(AppGroupSDK::FeatureFlagStatus::enabled);
    for (const auto module : {kQXE, kMAM}) {
      EXPECT_EQ(AppGroupSDK::AppIdProvider().storeAppId(appIdOf(module), module),
                AppGroupSDK::DataStoreStatus::success);
    }
  }

  static AppGroupSDK::AppDeviceInfo device(const std::string& baseUrl) {
    return {baseUrl,         "app-1",         "device-1", "access-secret", "5.2.0", "subscriber-secret",
            "tenant-secret", "session-secret"};
  }
  static void setDevice(const std::string& baseUrl) {
    AppGroupSDK::AppDeviceInfoStore().saveModelData(device(baseUrl));
  }
  static void setFeature(AppGroupSDK::FeatureFlagStatus flag) {
    AppGroupSDK::FeatureConfigDetailStore().saveModelData(
        AppGroupSDK::FeatureConfigDetail(AppGroupSDK::DeliveryReceiptConfig(flag)));
  }

  static AppGroupSDK::DeliveryReceiptsModelStore store(ExtensionModuleName module) {
    return {module, appIdOf(module)};
  }
  static Receipts stored(ExtensionModuleName module) {
    const auto model = store(module).fetchModuleScopedModelData().value();
    return model ? model->pnData() : Receipts();
  }
  static void put(ExtensionModuleName module, Receipts receipts) {
    store(module).saveModuleScopedModelData(AppGroupSDK::DeliveryReceiptsModel(std::move(receipts)));
  }
  const support::HostBundle& bundle() const { return bundle_; }

 private:
  support::HostBundle bundle_{
      "<key>VT_QUORIX_APP_GROUP_KEY</key><string>group.com.example.host</string>"
      "<key>CFBundleIdentifier</key><string>com.example.host</string>"
      "<key>CFBundleShortVersionString</key><string>3.1</string>"};
};

inline DeliveryReceiptPNModel receipt(int number, PNStatus status = PNStatus::pending) {
  return {"uuid-" + std::to_string(number),
          "message-" + std::to_string(number),
          std::nullopt,
          "type",
          1'700'000'000.25 + number,
          "{}",
          status};
}

inline Receipts receipts(int first, int last, PNStatus status = PNStatus::pending) {
  Receipts list;
  for (int number = first; number <= last; ++number) list.push_back(receipt(number, status));
  return list;
}

inline std::vector<std::string> messageIds(const Receipts& list) {
  std::vector<std::string> ids;
  for (const auto& entry : list) ids.push_back(entry.messageId());
  return ids;
}

// A push of this system for the modules that the destinations' bits name.
inline QXPlatform::Dictionary receiptPush(const std::string& messageId, int destinations = 3) {
  return {{"_sid", "vtqx"},
          {"_m", messageId},
          {"_mt", "promo"},
          {"_co", QXPlatform::encodeBase64("1:" + std::to_string(destinations) + ":")}};
}

inline QXPlatform::Dictionary bodyOf(const backend::Request& request) {
  const auto body = QXPlatform::parseJSON(request.body);
  return body ? body->dictionary().value_or(QXPlatform::Dictionary()) : QXPlatform::Dictionary();
}

inline std::vector<QXPlatform::Value> itemsOf(const backend::Request& request) {
  const auto body = bodyOf(request);
  const QXPlatform::Value* nodes = body.find("nodes");
  if (nodes == nullptr || nodes->elements().size() != 1) return {};
  const QXPlatform::Value* items = nodes->elements()[0].find("items");
  return items == nullptr
             ? std::vector<QXPlatform::Value>()
             : std::vector<QXPlatform::Value>(items->elements().begin(), items->elements().end());
}

inline bool isForMAM(const backend::Request& request) {
  return request.path.find("/platform/messaging/mobileapp/v1/events/engagement") != std::string::npos;
}

// Sends pushes through the whole service extension.
class Extension {
 public:
  // Returns when the notification has been handed back, which is when every receipt is through.
  bool push(const QXPlatform::Dictionary& userInfo) {
    start(userInfo);
    return deliveries_.waitFor(started_);
  }
  void start(const QXPlatform::Dictionary& userInfo) {
    auto service = std::make_shared<TestService>();
    service->didReceiveNotificationRequest(makeRequest(userInfo), deliveries_.handler());
    services_.push_back(std::move(service));
    ++started_;
  }
  const Deliveries& deliveries() const { return deliveries_; }

 private:
  std::vector<std::shared_ptr<TestService>> services_;
  std::size_t started_ = 0;
  Deliveries deliveries_;
};

}  // namespace QXExtensionSDK
