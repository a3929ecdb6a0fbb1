#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "AppGroupSDK/records/AppDeviceInfo.h"
#include "AppGroupSDK/records/CarouselClickModel.h"
#include "AppGroupSDK/records/CarouselRichFeatureMetaUtils.h"
#include "AppGroupSDK/records/DeliveryReceiptsModel.h"
#include "AppGroupSDK/records/FeatureConfigDetail.h"
#include "AppGroupSDK/records/ModuleAppMappings.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/JSONCoding.h"

namespace AppGroupSDK {
namespace {

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

}  // namespace
}  // namespace AppGroupSDK
