// From push to request: who gets a receipt, what is posted, and what a missing value does.

#include <gtest/gtest.h>

#include <regex>

#include "QXExtensionSDK/receipts/UserAgentProvider.h"
#include "QXPlatform/foundation/Device.h"
#include "QXPlatform/foundation/Locale.h"
#include "tests/QXExtensionSDK/receipts/ReceiptTestKit.h"

namespace QXExtensionSDK {
namespace {

using backend::LoopbackServer;
using backend::Request;
using QXPlatform::Dictionary;

std::string canonical(std::string_view json) {
  return *QXPlatform::writeJSON(*QXPlatform::parseJSON(json), QXPlatform::JSONStyle::pretty);
}

// Without what differs from push to push.
std::string bodyText(const Request& request) {
  const std::regex uuid("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
  const std::regex now("20(2[4-9]|[3-9][0-9])-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z");
  return canonical(std::regex_replace(std::regex_replace(request.body, uuid, "UUID"), now, "NOW"));
}

class ReceiptRequestTest : public testing::Test {
 protected:
  bool push(const Dictionary& userInfo) { return extension_.push(userInfo); }
  // The one request of a push, whose path and further headers are these.
  Request sent(const std::string& path,
               const std::vector<std::pair<std::string, std::string>>& headers) const {
    const auto requests = server_.requests();
    EXPECT_EQ(requests.size(), 1U);
    if (requests.empty()) return {};
    EXPECT_EQ(requests[0].method + " " + requests[0].path, "POST /base" + path);
    EXPECT_EQ(requests[0].header("Authorization"), "Bearer access-secret");
    EXPECT_EQ(requests[0].header("Content-Type"), "application/json");
    for (const auto& [name, value] : headers) EXPECT_EQ(requests[0].header(name), value) << name;
    return requests[0];
  }

  const LoopbackServer server_;
  const ReceiptHost host_{server_.url("/base/")};
  support::ScopedLogRecorder log_;
  Extension extension_;
};

TEST_F(ReceiptRequestTest, TheEngagementModulePostsAnalyticEvents) {
  ReceiptHost::put(kQXE, {receipt(1), {"uuid-2", "m2", "", "t", 1e300, std::nullopt, PNStatus::failed}});
  ASSERT_TRUE(push(receiptPush("m1", 1).merging({{"_r", "r1"}, {"_pb", Dictionary{{"k", "v"}}}})));
  const auto& device = QXPlatform::Device::current();
  const Request request =
      sent("/devicestatistics/v1/analytic",
           {{"X-Subscriber-Token", "subscriber-secret"},
            {"User-Agent", "QuorixSdk/5.2.0 (" + device.systemName + " " + device.systemVersion + "; " +
                               QXPlatform::Locale::currentIdentifier() + "; Apple/" + device.name +
                               ") com.example.host/3.1; QuorixExtensionSdk/1.0.0"}});
  EXPECT_EQ(bodyText(request), canonical(R"({
    "applicationId": "app-1", "deviceId": "device-1",
    "nodes": [{"version": 1, "name": "event", "items": [
      {"eventType": 112, "event": {
        "uuid": "uuid-2", "applicationId": "app-1", "deviceId": "device-1", "messageId": "m2",
        "messageType": "t", "propertyBag": "", "receiptDateUtc": "NOW"}},
      {"eventType": 112, "event": {
        "uuid": "uuid-1", "applicationId": "app-1", "deviceId": "device-1", "messageId": "message-1",
        "messageType": "type", "propertyBag": "{}", "receiptDateUtc": "NOW",
        "eventDateUtc": "2023-11-14T22:13:21.250Z"}},
      {"eventType": 112, "event": {
        "uuid": "UUID", "applicationId": "app-1", "deviceId": "device-1", "messageId": "m1",
        "messageType": "promo", "propertyBag": "{\n  \"k\" : \"v\"\n}", "requestId": "r1",
        "receiptDateUtc": "NOW", "eventDateUtc": "NOW"}}]}]})"));
}

TEST_F(ReceiptRequestTest, TheAppMessagingModulePostsEngagementEvents) {
  ASSERT_TRUE(push(receiptPush("m1", 2)));
  const Request request =
      sent("/platform/messaging/mobileapp/v1/events/engagement",
           {{"x-vlto-mobile-app-id", "mam-app-secret"}, {"x-vlto-tenant-id", "tenant-secret"}});
  EXPECT_EQ(request.header("X-Subscriber-Token"), std::nullopt);
  EXPECT_FALSE(request.header("User-Agent").value_or("").starts_with("QuorixSdk"));
  const auto& device = QXPlatform::Device::current();
  EXPECT_EQ(bodyText(request), canonical(R"({
    "deviceId": "device-1", "devicePlatform": "iPhone OS", "mobileAppName": "com.example.host",
    "nodes": [{"version": 1, "name": "event", "items": [
      {"eventType": "RECEIVED", "event": {
        "eventId": "UUID", "sessionId": "session-secret", "category": "engagement", "messageId": "m1",
        "receiptDateUtc": "NOW", "dateTime": "NOW", "propertyBag": "{}"}}]}],
    "deviceModel": ")" + device.name + R"(", "deviceVersion": ")" +
                                         device.systemVersion + R"(", "locale": ")" +
                                         QXPlatform::Locale::currentIdentifier() + "\"}"));
}

TEST_F(ReceiptRequestTest, AFullBatchIsOneRequestAndTheRestGoesWithTheNextPush) {
  ReceiptHost::put(kQXE, receipts(1, 200));
  ASSERT_TRUE(push(receiptPush("m1", 1)));
  ASSERT_EQ(server_.requests().size(), 1U);
  EXPECT_EQ(itemsOf(server_.requests()[0]).size(), 150U);
  EXPECT_EQ(ReceiptHost::stored(kQXE).size(), 51U);
  ASSERT_TRUE(push(receiptPush("m2", 1)));
  EXPECT_EQ(itemsOf(server_.requests()[1]).size(), 52U);
  EXPECT_TRUE(ReceiptHost::stored(kQXE).empty());
}

TEST_F(ReceiptRequestTest, AModulesOwnRecordComesBeforeTheBaseRecordAndADamagedOneEndsTheSearch) {
  using AppGroupSDK::FeatureFlagStatus;
  const AppGroupSDK::FeatureConfigDetailStore mamFeatures(kMAM, appIdOf(kMAM));
  mamFeatures.saveModuleScopedModelData(
      AppGroupSDK::FeatureConfigDetail(AppGroupSDK::DeliveryReceiptConfig(FeatureFlagStatus::disabled)));
  ASSERT_TRUE(push(receiptPush("m1")));
  EXPECT_EQ(server_.requests().size(), 1U);
  EXPECT_TRUE(log_->has("Delivery Receipt feature flag is: 0 for configuration: mobileAppMessaging"));

  host_.bundle().write(
      "com.veltro.qx.extensionsdk.featureConfigDetail.mobileAppMessaging.mam-app-secret.data", "{");
  ASSERT_TRUE(push(receiptPush("m2", 2)));
  EXPECT_EQ(server_.requests().size(), 1U);
  EXPECT_TRUE(log_->has("No delivery receipt managers available"));

  auto own = ReceiptHost::device(server_.url("/own"));
  AppGroupSDK::AppDeviceInfoStore(kQXE, appIdOf(kQXE)).saveModuleScopedModelData(own);
  ASSERT_TRUE(push(receiptPush("m3", 1)));
  EXPECT_EQ(server_.requests().back().path, "/own/devicestatistics/v1/analytic");
}

TEST(UserAgentTest, EveryPlaceOfTheVersionIsFilledOnce) {
  const ReceiptHost host("https://example.com");
  EXPECT_TRUE(UserAgentProvider::userAgent("{qxsdk_version}1").starts_with("QuorixSdk/{qxsdk_version}1 ("));
}

}  // namespace
}  // namespace QXExtensionSDK
