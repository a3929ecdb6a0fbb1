#include "AppGroupSDK/records/AppDeviceInfo.h"

#include "AppGroupSDK/context/ContextModuleChecker.h"
#include "AppGroupSDK/context/PNContextUtils.h"
#include "AppGroupSDK/context/PNDestinationModuleMapping.h"
#include "AppGroupSDK/records/CarouselClickModel.h"
#include "AppGroupSDK/records/CarouselRichFeatureMetaUtils.h"
#include "AppGroupSDK/records/DeliveryReceiptsModel.h"
#include "AppGroupSDK/records/FeatureConfigDetail.h"
#include "AppGroupSDK/records/ModuleAppMappings.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "tests/support/Test.h"

namespace AppGroupSDK {
namespace {

using enum ExtensionModuleName;
using enum PNContextDestination;
using QXPlatform::Dictionary;
using QXPlatform::Value;

DeliveryReceiptPNModel receipt(const std::string& uuid, double date) {
  return {uuid, "m", std::nullopt, "t", date, std::nullopt, PNStatus::pending};
}

// What a record is in a file: equal values both ways, whatever the order of the keys.
template <typename Record>
void expectJSON(const Record& record, const std::string& json) {
  const auto encoded = QXPlatform::encodeJSON(record);
  ASSERT_TRUE(encoded);
  EXPECT_EQ(QXPlatform::parseJSON(*encoded).value(), QXPlatform::parseJSON(json).value()) << *encoded;
  const auto decoded = QXPlatform::decodeJSON<Record>(json);
  ASSERT_TRUE(decoded) << json;
  EXPECT_EQ(*decoded, record);
}

TEST(Records, HaveTheirFormInFiles) {
  expectJSON(AppDeviceInfo("https://x", "app", "dev", "token", "9.1", "sub", "ten", "ses"),
             R"({"baseUrl":"https://x","applicationId":"app","deviceId":"dev","accessToken":"token",
                 "qxsdkVersion":"9.1","subscriberToken":"sub","tenantId":"ten","sessionId":"ses"})");
  expectJSON(AppDeviceInfo("", "a", "d", "t", "9", std::nullopt, std::nullopt, std::nullopt),
             R"({"baseUrl":"","applicationId":"a","deviceId":"d","accessToken":"t","qxsdkVersion":"9"})");
  expectJSON(DeliveryReceiptsModel(std::vector<DeliveryReceiptPNModel>()), R"({"pnData":[]})");
  expectJSON(DeliveryReceiptsModel(
                 {{"u", "m", "r", "t", 1714554187.25, "{\"a\":1}", PNStatus::failed}, receipt("v", 3)}),
             R"({"pnData":[{"uuid":"u","messageId":"m","requestId":"r","messageType":"t",
                 "eventDateUtc":1714554187.25,"propertyBag":"{\"a\":1}","status":1},
                {"uuid":"v","messageId":"m","messageType":"t","eventDateUtc":3.0,"status":0}]})");
  expectJSON(FeatureConfigDetail(DeliveryReceiptConfig(FeatureFlagStatus::enabled)),
             R"({"deliveryReceiptConfig":{"featureFlag":1}})");
  expectJSON(ModuleAppMappings({{ExtensionModuleName::mobileAppMessaging, "id"}}),
             R"({"mappings":[{"moduleName":"mobileAppMessaging","appId":"id"}]})");
  expectJSON(CarouselClickModel("m:r", true, 2, CarouselActionType::openWebUrl, "https://x", "p"),
             R"({"notificationUniqueId":"m:r","isCarouselClick":true,"clickIndex":2,"actionType":2,
                 "actionUrl":"https://x","panelId":"p"})");
}

TEST(Records, AreReadFromNumbersAndNullsOfOtherWriters) {
  const auto decoded = QXPlatform::decodeJSON<DeliveryReceiptsModel>(
      R"({"extra":1,"pnData":[{"status":1.0,"uuid":"u","messageId":"m","requestId":null,"messageType":"t",
          "eventDateUtc":1714554187}]})");
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->pnData().front(),
            DeliveryReceiptPNModel("u", "m", std::nullopt, "t", 1714554187, std::nullopt, PNStatus::failed));
}

TEST(Records, AreRefusedWholeForOneBadField) {
  EXPECT_FALSE(QXPlatform::decodeJSON<AppDeviceInfo>("{}"));
  EXPECT_FALSE(QXPlatform::decodeJSON<AppDeviceInfo>(
      R"({"baseUrl":null,"applicationId":"a","deviceId":"d","accessToken":"t","qxsdkVersion":"9"})"));
  EXPECT_FALSE(QXPlatform::decodeJSON<AppDeviceInfo>(
      R"({"baseUrl":"","applicationId":"a","deviceId":"d","accessToken":"t","qxsdkVersion":9})"));
  EXPECT_FALSE(QXPlatform::decodeJSON<AppDeviceInfo>(R"({"baseUrl":"","applicationId":"a","deviceId":"d",
      "accessToken":"t","qxsdkVersion":"9","tenantId":7})"));
  for (const auto* status : {"2", "-1", "0.5", "true", "\"0\"", "null"}) {
    EXPECT_FALSE(QXPlatform::decodeJSON<DeliveryReceiptsModel>(
        std::string(
            R"({"pnData":[{"uuid":"u","messageId":"m","messageType":"t","eventDateUtc":1,"status":)") +
        status + "}]}"))
        << status;
  }
  for (const auto* action : {"4", "-1", "1e30"}) {
    EXPECT_FALSE(QXPlatform::decodeJSON<CarouselClickModel>(
        std::string(
            R"({"notificationUniqueId":"m","isCarouselClick":true,"clickIndex":0,"panelId":"p","actionType":)") +
        action + "}"))
        << action;
  }
}

TEST(DeliveryReceipts, AreOrderedByDateAlone) {
  std::vector receipts{receipt("c", 3), receipt("a", 1), receipt("b", 2)};
  std::ranges::sort(receipts, [](const auto& left, const auto& right) { return left < right; });
  EXPECT_EQ(receipts[0].uuid() + receipts[1].uuid() + receipts[2].uuid(), "abc");
  EXPECT_FALSE(receipt("x", 1) < receipt("y", 1));
  EXPECT_FALSE(receipt("x", 1) > receipt("y", 1));
  EXPECT_TRUE(receipt("x", 1) <= receipt("y", 1));
}

TEST(DeliveryReceipts, DescribeThemselvesAsPrettyJSON) {
  const DeliveryReceiptPNModel full("u", "m", "r", "t", 1.5, "{}", PNStatus::failed);
  EXPECT_NE(full.description().find("\n  \"uuid\" : \"u\""), std::string::npos) << full.description();
  EXPECT_EQ(QXPlatform::parseJSON(full.description()).value(), Value(Dictionary{{"uuid", "u"},
                                                                                {"messageId", "m"},
                                                                                {"requestId", "r"},
                                                                                {"messageType", "t"},
                                                                                {"eventDateUtc", 1.5},
                                                                                {"propertyBag", "{}"},
                                                                                {"status", 1}}));
  EXPECT_EQ(receipt("u", std::numeric_limits<double>::infinity()).description(), "");
}

TEST(ModuleAppMappings, KeepTheLastOfEachModule) {
  using enum ExtensionModuleName;
  const ModuleAppMapping a1(quorixEngagement, "1");
  const ModuleAppMapping b1(mobileAppMessaging, "1");
  const ModuleAppMapping a2(quorixEngagement, "2");
  EXPECT_EQ(ModuleAppMappings({a1, b1, a2}).mappings(), (std::vector{b1, a2}));
  EXPECT_EQ(ModuleAppMappings({a1, b1}).fetchAppIdForModule(mobileAppMessaging), "1");
  EXPECT_EQ(ModuleAppMappings({a1}).fetchAppIdForModule(mobileAppMessaging), std::nullopt);

  // A file that names a module twice is read as it stands: its first mapping counts until the next save.
  const auto stored = QXPlatform::decodeJSON<ModuleAppMappings>(
      R"({"mappings":[{"moduleName":"quorixEngagement","appId":"1"},{"moduleName":"quorixEngagement","appId":"2"},
          {"moduleName":"QUORIXENGAGEMENT","appId":"3"}]})");
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->fetchAppIdForModule(quorixEngagement), "1");
  EXPECT_EQ(ModuleAppMappings(stored->mappings()).fetchAppIdForModule(quorixEngagement), "2");
}

TEST(ExtensionModuleNameDeathTest, StopsTheProcessForAnUnknownModule) {
  const auto unknown = static_cast<ExtensionModuleName>(3);
  EXPECT_DEATH(ModuleAppMapping(unknown, "id"), "module");
}

TEST(CarouselRichFeatureMetaUtils, JoinsTheIdentifiersOfAPush) {
  const std::pair<Dictionary, std::optional<std::string>> cases[] = {
      {{{"_m", "a"}, {"_r", "b"}}, "a:b"},
      {{{"_m", "a"}}, "a:"},
      {{{"_r", "b"}}, ":b"},
      {{{"_m", 1}, {"_r", "b"}}, ":b"},
      {{{"_m", 1}}, std::nullopt},
      {{{"_m", ""}, {"_r", ""}}, std::nullopt},
      {{}, std::nullopt},
  };
  for (const auto& [userInfo, id] : cases) {
    EXPECT_EQ(CarouselRichFeatureMetaUtils::getUniqueNotificationIdFrom(userInfo), id)
        << userInfo.description();
  }
}

const PNContextInfo kDefault(PNContextSource::none, {0}, std::nullopt);

PNContextInfo context(std::int64_t source, std::vector<std::int64_t> destinations,
                      std::optional<std::string> businessUnit = std::nullopt) {
  return {QXPlatform::fromRawValue<PNContextSource>(source).value(), std::move(destinations),
          std::move(businessUnit)};
}

PNContextInfo parse(const std::string& plain) {
  return PNContextUtils::parseContextInfoFromContextString(QXPlatform::encodeBase64(plain));
}

TEST(PNContext, ReadsThreeFields) {
  const std::pair<std::string, PNContextInfo> cases[] = {
      {"3:6:BU-7", context(1, {2, 4}, "BU-7")},
      {"0:2:", context(0, {2})},
      {"1:0:", context(1, {0})},
      {"2:7: b ", context(2, {1, 2, 4}, " b ")},
      {"4:8:", kDefault},
      {"::", kDefault},
      {"::x", context(0, {0}, "x")},
      {"+1:+2:", context(1, {2})},
      {"-1:-2:", kDefault},
      {"+-1:--1:", kDefault},
      {" 1:2 :", kDefault},
      {"0x1:1e1:", kDefault},
      {"1.0:\xD9\xA1:", kDefault},
      {"9223372036854775807:9223372036854775808:", context(1, {0})},
      {"1:1:\xC3\xA9", context(1, {1}, "\xC3\xA9")},
  };
  for (const auto& [plain, info] : cases) EXPECT_EQ(parse(plain), info) << plain;
}

TEST(PNContext, TakesTheDefaultForWhatIsNone) {
  for (const auto* plain : {"", "1:2", "1:2:3:4", "1", "1:2:\xFF", "\xEF\xBB"}) {
    EXPECT_EQ(parse(plain), kDefault) << plain;
  }
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContextString("3:6:BU-7"), kDefault);
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContextString("Mzo2OkJVLTc"), kDefault);
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContextString(" \nMzo2OkJVLTc=\t"), parse("3:6:BU-7"));
}

TEST(PNContext, IsTheTextUnderItsKey) {
  QXPlatform::NotificationProperties properties;
  properties.userInfo = {{"_co", "Mzo2OkJVLTc="}};
  const QXPlatform::UNNotificationContent content(properties);
  EXPECT_EQ(PNContextUtils::extractContextFieldFromContent(content), "Mzo2OkJVLTc=");
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContent(content), parse("3:6:BU-7"));
  properties.userInfo = {{"_co", 7}};
  const QXPlatform::UNNotificationContent other(properties);
  EXPECT_EQ(PNContextUtils::extractContextFieldFromContent(other), std::nullopt);
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContent(other), kDefault);
  EXPECT_EQ(PNContextUtils::parseContextInfoFromUserInfo({}), kDefault);
}

TEST(PNContext, CountsAsAbsentWhenItSaysNothing) {
  EXPECT_TRUE(kDefault.isInavlidOrAbsentContext());
  EXPECT_TRUE(context(0, {}).isInavlidOrAbsentContext());
  EXPECT_TRUE(context(0, {3, 0}).isInavlidOrAbsentContext()) << "unknown numbers are dropped first";
  for (const auto& info :
       {context(1, {0}), context(0, {0}, "b"), context(0, {0, 0}), context(0, {3}), context(0, {2})}) {
    EXPECT_FALSE(info.isInavlidOrAbsentContext()) << info.description();
  }
  EXPECT_EQ(context(1, {5, 4, 3, 0, -1}).destinations(), (std::vector{unmapped, none}));
  EXPECT_EQ(context(1, {2, 4}, "b").description(), "source: 1, destinations: [2, 4], businessUnitId: b");
}

TEST(PNDestinationModuleMapping, MapsDestinationsToModules) {
  const PNDestinationModuleMapping mapping;
  EXPECT_EQ(mapping.getModules({}), std::nullopt);
  EXPECT_EQ(mapping.getModules({none, unmapped}), std::vector<ExtensionModuleName>());
  EXPECT_EQ(mapping.getModules({appMessaging, engagement, unmapped, appMessaging}),
            (std::vector{mobileAppMessaging, quorixEngagement}));
  for (const auto module : rawValues(QXPlatform::RawValuesOf<ExtensionModuleName>())) {
    EXPECT_EQ(mapping.getModule(mapping.getDestination(module)), module);
  }
}

TEST(ContextModuleChecker, LetsTheNamedModulesProceedAndLogsWhatTheContextSaid) {
  const std::string in = "debug Module: PN destination contains module: ";
  const std::string notIn = "error Module: PN destination doesn't contain module: ";
  const std::string engagement = "quorixEngagement";
  const std::string messaging = "mobileAppMessaging";
  using Lines = std::vector<std::string>;
  struct Case {
    PNContextInfo context;
    bool engagementProceeds;
    bool messagingProceeds;
    Lines lines;
  };
  const ContextModuleChecker checker(QXExtensionSDK::Logger::content());
  const auto level = QXExtensionSDK::Logger::globalLoglevel();
  QXExtensionSDK::Logger::setGlobalLoglevel(0);
  for (const auto& [info, engagementProceeds, messagingProceeds, lines] :
       {Case{kDefault, true, false, {notIn + messaging}},
        Case{parse("0:2:"), false, true, {notIn + engagement, in + messaging}},
        Case{parse("1:0:"), false, false, {notIn + engagement, notIn + messaging}},
        Case{parse("0:7:"), true, true, {in + engagement, in + messaging}},
        Case{context(0, {3}), false, false, {notIn + engagement, notIn + messaging}}}) {
    const support::ScopedLogRecorder log;
    EXPECT_EQ(checker.shouldProceed(quorixEngagement, info), engagementProceeds) << info.description();
    EXPECT_EQ(checker.shouldProceed(mobileAppMessaging, info), messagingProceeds) << info.description();
    EXPECT_EQ(log->lines(), lines);
    for (const auto& entry : log->entries()) EXPECT_EQ(entry.subsystem, "ContentExtension");
  }
  QXExtensionSDK::Logger::setGlobalLoglevel(level);
}

}  // namespace
}  // namespace AppGroupSDK
