// From push to request: who gets a receipt, what is posted, and what a missing value does.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QXExtensionSDK/receipts/UserAgentProvider.h"
#include "platform/foundation/Device.h"
#include "platform/foundation/Locale.h"
#include "tests/QXExtensionSDK/receipts/ReceiptTestKit.h"

namespace QXExtensionSDK {
namespace {

using backend::LoopbackServer;
using backend::Request;
using platform::Dictionary;
using platform::Value;

class ReceiptRequestTest : public testing::Test {
 protected:
  const Request* request(ExtensionModuleName module) {
    requests_ = server_.requests();
    const auto found = std::ranges::find(requests_, module == kMAM, isForMAM);
    return found == requests_.end() ? nullptr : &*found;
  }
  static std::string text(const Value& value, std::string_view key) {
    const Value* found = value.find(key);
    return found == nullptr ? "none" : std::string(found->string().value_or("not text"));
  }
  bool push(const Dictionary& userInfo) { return extension_.push(userInfo); }

  const LoopbackServer server_;
  const ReceiptHost host_{server_.url("/base/")};
  support::ScopedLogRecorder log_;
  Extension extension_;
  std::vector<Request> requests_;
};

const auto kTimestamp =
    testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z");

TEST_F(ReceiptRequestTest, TheEngagementModulePostsAnalyticEvents) {
  ReceiptHost::put(kQXE, {receipt(1), {"uuid-2", "m2", "", "t", 1e300, std::nullopt, PNStatus::failed}});
  ASSERT_TRUE(push(receiptPush("m1", 1).merging({{"_r", "r1"}, {"_pb", Dictionary{{"k", "v"}}}})));
  const Request* sent = request(kQXE);
  ASSERT_NE(sent, nullptr);
  EXPECT_EQ(server_.requests().size(), 1U);
  EXPECT_EQ(sent->method, "POST");
  EXPECT_EQ(sent->path, "/base/devicestatistics/v1/analytic");
  EXPECT_EQ(sent->header("X-Subscriber-Token"), "subscriber-secret");
  EXPECT_EQ(sent->header("Authorization"), "Bearer access-secret");
  EXPECT_EQ(sent->header("Content-Type"), "application/json");
  const auto& device = platform::Device::current();
  EXPECT_EQ(sent->header("User-Agent"), "QuorixSdk/5.2.0 (" + device.systemName + " " + device.systemVersion +
                                            "; " + platform::Locale::currentIdentifier() + "; Apple/" +
                                            device.name + ") com.example.host/3.1; QuorixExtensionSdk/1.0.0");

  const Dictionary body = bodyOf(*sent);
  EXPECT_EQ(body.size(), 3U);
  EXPECT_EQ(text(body, "applicationId"), "app-1");
  EXPECT_EQ(text(body, "deviceId"), "device-1");
  EXPECT_EQ(body.find("nodes")->elements()[0].find("version")->integer(), 1);
  EXPECT_EQ(text(body.find("nodes")->elements()[0], "name"), "event");
  const auto items = itemsOf(*sent);
  ASSERT_EQ(items.size(), 3U);
  EXPECT_EQ(items[0].find("eventType")->integer(), 112);
  const Value& undated = *items[0].find("event");
  EXPECT_EQ(text(undated, "eventDateUtc"), "none");
  EXPECT_EQ(text(undated, "requestId"), "none");
  EXPECT_EQ(text(undated, "propertyBag"), "");
  EXPECT_EQ(text(*items[1].find("event"), "eventDateUtc"), "2023-11-14T22:13:21.250Z");
  const Value& own = *items[2].find("event");
  EXPECT_EQ(own.dictionary()->size(), 9U);
  EXPECT_EQ(text(own, "messageId"), "m1");
  EXPECT_EQ(text(own, "messageType"), "promo");
  EXPECT_EQ(text(own, "requestId"), "r1");
  EXPECT_EQ(text(own, "propertyBag"), "{\n  \"k\" : \"v\"\n}");
  EXPECT_THAT(text(own, "receiptDateUtc"), kTimestamp);
  EXPECT_THAT(text(own, "eventDateUtc"), kTimestamp);
  EXPECT_TRUE(ReceiptHost::stored(kQXE).empty());
}

TEST_F(ReceiptRequestTest, TheAppMessagingModulePostsEngagementEvents) {
  ASSERT_TRUE(push(receiptPush("m1", 2)));
  const Request* sent = request(kMAM);
  ASSERT_NE(sent, nullptr);
  EXPECT_EQ(server_.requests().size(), 1U);
  EXPECT_EQ(sent->path, "/base/platform/messaging/mobileapp/v1/events/engagement");
  EXPECT_EQ(sent->header("x-vlto-mobile-app-id"), "mam-app-secret");
  EXPECT_EQ(sent->header("x-vlto-tenant-id"), "tenant-secret");
  EXPECT_EQ(sent->header("Authorization"), "Bearer access-secret");
  EXPECT_EQ(sent->header("Content-Type"), "application/json");
  EXPECT_EQ(sent->header("X-Subscriber-Token"), std::nullopt);
  EXPECT_FALSE(sent->header("User-Agent").value_or("").starts_with("QuorixSdk"));

  const Dictionary body = bodyOf(*sent);
  EXPECT_EQ(body.size(), 7U);
  EXPECT_EQ(text(body, "deviceId"), "device-1");
  EXPECT_EQ(text(body, "deviceModel"), platform::Device::current().name);
  EXPECT_EQ(text(body, "devicePlatform"), "iPhone OS");
  EXPECT_EQ(text(body, "deviceVersion"), platform::Device::current().systemVersion);
  EXPECT_EQ(text(body, "locale"), platform::Locale::currentIdentifier());
  EXPECT_EQ(text(body, "mobileAppName"), "com.example.host");
  const auto items = itemsOf(*sent);
  ASSERT_EQ(items.size(), 1U);
  EXPECT_EQ(text(items[0], "eventType"), "RECEIVED");
  const Value& event = *items[0].find("event");
  EXPECT_EQ(event.dictionary()->size(), 7U);
  EXPECT_EQ(text(event, "eventId").size(), 36U);
  EXPECT_EQ(text(event, "sessionId"), "session-secret");
  EXPECT_EQ(text(event, "category"), "engagement");
  EXPECT_EQ(text(event, "messageId"), "m1");
  EXPECT_THAT(text(event, "receiptDateUtc"), kTimestamp);
  EXPECT_THAT(text(event, "dateTime"), kTimestamp);
  EXPECT_TRUE(ReceiptHost::stored(kMAM).empty());
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
