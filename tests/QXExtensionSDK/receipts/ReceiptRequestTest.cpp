// From push to request: who gets a receipt, what is posted, and what a missing value does.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

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

using Lines = std::vector<std::string>;

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
  void expectLines(const Lines& lines) const {
    for (const std::string& line : lines) EXPECT_TRUE(log_->has(line)) << line;
  }

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

TEST_F(ReceiptRequestTest, WhoIsNotMeantGetsNoReceipt) {
  struct Case {
    std::string name;
    Dictionary push;
    std::size_t requests;
    Lines lines;
  };
  const Dictionary ours{{"_sid", "VTQX"}, {"_m", "m"}, {"_mt", "t"}};
  const std::vector<Case> cases{
      {"another sender",
       {{"_sid", "VTQ"}, {"_m", "m"}, {"_mt", "t"}},
       0,
       {"Not sending delivery receipt as it is a non VTQX push",
        "Backing out as shouldProceed() returned false, class=DeliveryReceiptProcessor"}},
      {"no message id",
       ours.removing("_m"),
       0,
       {"Missing required messageId so unable to generate delivery receipt",
        "Missing required values to generate delivery receipt event"}},
      {"no message type",
       ours.setting("_mt", 1),
       0,
       {"Missing required messageType so unable to generate delivery receipt",
        "Missing required values to generate delivery receipt event"}},
      {"no module",
       ours.setting("_co", platform::encodeBase64("1:0:")),
       0,
       {"PN destination doesn't contain module: mobileAppMessaging",
        "PN destination doesn't contain module: quorixEngagement", "No delivery receipt managers available"}},
      {"no context",
       ours,
       1,
       {"PN destination doesn't contain module: mobileAppMessaging",
        "Delivery Receipt feature flag is: 1 for configuration: quorixEngagement"}}};
  std::size_t sent = 0;
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    ASSERT_TRUE(push(one.push));
    expectLines(one.lines);
    sent += one.requests;
    EXPECT_EQ(server_.requests().size(), sent);
    EXPECT_TRUE(ReceiptHost::stored(kQXE).empty());
    EXPECT_TRUE(ReceiptHost::stored(kMAM).empty());
  }
}

TEST_F(ReceiptRequestTest, AModulesOwnRecordComesBeforeTheBaseRecordAndADamagedOneEndsTheSearch) {
  using AppGroupSDK::FeatureFlagStatus;
  const AppGroupSDK::FeatureConfigDetailStore mamFeatures(kMAM, appIdOf(kMAM));
  mamFeatures.saveModuleScopedModelData(
      AppGroupSDK::FeatureConfigDetail(AppGroupSDK::DeliveryReceiptConfig(FeatureFlagStatus::disabled)));
  ASSERT_TRUE(push(receiptPush("m1")));
  EXPECT_EQ(server_.requests().size(), 1U);
  expectLines({"Delivery Receipt feature flag is: 0 for configuration: mobileAppMessaging"});

  host_.bundle().write(
      "com.veltro.qx.extensionsdk.featureConfigDetail.mobileAppMessaging.mam-app-secret.data", "{");
  ASSERT_TRUE(push(receiptPush("m2", 2)));
  EXPECT_EQ(server_.requests().size(), 1U);
  expectLines({"No delivery receipt managers available"});

  auto own = ReceiptHost::device(server_.url("/own"));
  AppGroupSDK::AppDeviceInfoStore(kQXE, appIdOf(kQXE)).saveModuleScopedModelData(own);
  ASSERT_TRUE(push(receiptPush("m3", 1)));
  EXPECT_EQ(server_.requests().back().path, "/own/devicestatistics/v1/analytic");
}

TEST_F(ReceiptRequestTest, WithTheFlagOffOrNoApplicationIdNothingIsStored) {
  ReceiptHost::setFeature(AppGroupSDK::FeatureFlagStatus::disabled);
  ASSERT_TRUE(push(receiptPush("m1")));
  expectLines({"No delivery receipt managers available"});
  ReceiptHost::setFeature(AppGroupSDK::FeatureFlagStatus::enabled);
  AppGroupSDK::ModuleAppMappingStore().saveModelData(
      AppGroupSDK::ModuleAppMappings(std::vector<AppGroupSDK::ModuleAppMapping>()));
  ASSERT_TRUE(push(receiptPush("m2")));
  expectLines(
      {"Unable to initialize DeliveryReceiptManagerProvider: No app ID found for module mobileAppMessaging",
       "Unable to initialize DeliveryReceiptManagerProvider: No app ID found for module quorixEngagement"});
  EXPECT_TRUE(server_.requests().empty());
  EXPECT_TRUE(ReceiptHost::stored(kQXE).empty());
}

// What a value that is not stored does to the modules: nothing is sent, the receipts stay pending.
TEST_F(ReceiptRequestTest, AMissingValueAbandonsTheSendAndKeepsTheReceipts) {
  using AppGroupSDK::AppDeviceInfo;
  struct Case {
    std::string name;
    std::optional<AppDeviceInfo> info;
    int destinations;
    Lines lines;
  };
  const std::string base = server_.url();
  const auto device = [&](const std::string& baseUrl, const char* subscriber, const char* tenant,
                          const char* session) {
    const auto text = [](const char* value) {
      return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    };
    return AppDeviceInfo(baseUrl, "a", "d", "access-secret", "5", text(subscriber), text(tenant),
                         text(session));
  };
  const std::string abandoned = "DeliveryReceiptRequest creation failure";
  const std::vector<Case> cases{
      {"engagement without a token",
       device(base, nullptr, "t", "s"),
       1,
       {"AccessToken not available", "QXE Request Headers not available", abandoned,
        "Failed to send delivery receipts using manager: QXEDeliveryReceiptManager"}},
      {"engagement with an empty token", device(base, "", "t", "s"), 1, {"AccessToken not available"}},
      {"no URL", device("", "s", "t", "s"), 3, {"Base URL not available", abandoned}},
      {"no absolute URL", device("foo", "s", "t", "s"), 3, {"Base URL not available", abandoned}},
      {"no host", device("http:///x", "s", "t", "s"), 3, {"Base URL not available", abandoned}},
      {"no web address", device("ftp://127.0.0.1/", "s", "t", "s"), 3, {"Base URL not available", abandoned}},
      {"messaging without a tenant",
       device(base, "s", nullptr, "s"),
       2,
       {"UMA TenantId not available", "MAM Request Headers not available", abandoned,
        "Failed to send delivery receipts using manager: MAMDeliveryReceiptManager"}},
      {"messaging without a session",
       device(base, "s", "t", nullptr),
       2,
       {"MAMDeliveryReceiptEvent creation failure: sessionId is missing"}},
      {"no record",
       std::nullopt,
       3,
       {"DeliveryReceiptEvent creation failure: applicationId is missing",
        "MAMDeliveryReceiptEvent creation failure: deviceId is missing"}}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    std::filesystem::remove(host_.bundle().file("com.veltro.qx.extensionsdk.appDeviceInfo.data"));
    if (one.info) AppGroupSDK::AppDeviceInfoStore().saveModelData(*one.info);
    for (const auto module : {kQXE, kMAM}) ReceiptHost::put(module, {});
    const support::ScopedLogRecorder log;
    ASSERT_TRUE(push(receiptPush("m1", one.destinations)));
    for (const std::string& line : one.lines) EXPECT_TRUE(log->has(line)) << line;
    EXPECT_TRUE(log->has("Some delivery receipts failed"));
    EXPECT_TRUE(server_.requests().empty());
    for (const auto module : {kQXE, kMAM}) {
      const bool meant = (one.destinations & static_cast<int>(module)) != 0;
      const auto stored = ReceiptHost::stored(module);
      ASSERT_EQ(stored.size(), meant ? 1U : 0U) << stringValue(module);
      EXPECT_TRUE(stored.empty() || stored[0].status() == PNStatus::pending);
    }
  }
}

TEST_F(ReceiptRequestTest, AReceiptThatCannotBeStoredIsSentAllTheSame) {
  // No file takes the place of a directory.
  std::filesystem::create_directory(
      host_.bundle().file("com.veltro.qx.extensionsdk.deliveryReceipt.quorixEngagement.qxe-app.data"));
  ASSERT_TRUE(push(receiptPush("m1", 1)));
  expectLines({"Failed to store receipt for manager: QXEDeliveryReceiptManager with result: false"});
  ASSERT_EQ(server_.requests().size(), 1U);
  EXPECT_EQ(itemsOf(server_.requests()[0]).size(), 1U);
}

TEST(UserAgentTest, EveryPlaceOfTheVersionIsFilledOnce) {
  const ReceiptHost host("https://example.com");
  EXPECT_TRUE(UserAgentProvider::userAgent("{qxsdk_version}1").starts_with("QuorixSdk/{qxsdk_version}1 ("));
}

}  // namespace
}  // namespace QXExtensionSDK
