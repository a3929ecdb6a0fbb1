// What becomes of one push's receipts, with every line that is logged on the way: its type, its category and
// its place in the order.

#include "QXExtensionSDK/receipts/DeliveryReceiptProcessor.h"

#include <regex>

#include "QXExtensionSDK/receipts/MAMDeliveryReceipts.h"
#include "QXExtensionSDK/receipts/QXEDeliveryReceipts.h"
#include "QXExtensionSDK/receipts/UserAgentProvider.h"
#include "QXPlatform/foundation/Device.h"
#include "QXPlatform/foundation/Locale.h"
#include "tests/QXExtensionSDK/receipts/ReceiptTestKit.h"
#include "tests/support/FreedTexts.h"

namespace QXExtensionSDK {
namespace {

using backend::LoopbackServer;
using backend::Request;
using backend::Response;
using QXPlatform::Dictionary;

// The list of the one receipt of receiptPush("m"), called LIST below.
const std::string kList = R"([{
  "eventDateUtc" : TIME,
  "messageId" : "m",
  "messageType" : "promo",
  "propertyBag" : "{}",
  "requestId" : null,
  "status" : 0,
  "uuid" : "UUID"
}])";

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
  return text;
}

// The lines, each on a new one, without what differs from run to run. Those of the network come last, since
// another thread writes them.
std::string textOf(const std::vector<std::string>& lines) {
  std::string text;
  std::string ofNetwork;
  for (const std::string& line : lines) {
    (line.find(" Network: ") == std::string::npos ? text : ofNetwork) += "\n" + line;
  }
  text += ofNetwork;
  text = std::regex_replace(text, std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"), "UUID");
  text = std::regex_replace(text, std::regex(R"("eventDateUtc" : [0-9.]+)"), R"("eventDateUtc" : TIME)");
  text = std::regex_replace(text, std::regex("\\] [0-9]+ bytes"), "] SIZE bytes");
  return replaced(text, kList, "LIST");
}

std::string leftText() {
  std::string text;
  for (const auto module : {kQXE, kMAM}) {
    for (const auto& receipt : ReceiptHost::stored(module)) {
      text += receipt.status() == PNStatus::failed ? ", 1 failed" : ", 1 pending";
    }
  }
  return text.empty() ? ", none left" : text;
}

using Preparation = std::function<void(const ReceiptHost&)>;

// A repository of somebody else's, whose list is there and empty.
class EmptyRepository final : public DeliveryReceiptRepository {
 public:
  AppGroupSDK::DataStoreStatus storeReceipt(std::string_view, const std::optional<std::string>&,
                                            std::string_view, const std::optional<Dictionary>&) override {
    return AppGroupSDK::DataStoreStatus::success;
  }
  std::optional<Receipts> fetchPendingReceipts() override { return Receipts(); }
  void handleSendResult(bool, const Receipts&, const ReceiptCompletion&) override { ADD_FAILURE(); }
};

TEST(ReceiptLogTest, AnEmptyListIsNone) {
  Logger::setGlobalLoglevel(0);
  const support::ScopedLogRecorder log;
  const auto deviceInfo = std::make_shared<AppDeviceInfoProvider>(kMAM, "app");
  MAMDeliveryReceiptManager manager(std::make_shared<EmptyRepository>(),
                                    std::make_unique<const MAMDeliveryReceiptPayloadCreator>(deviceInfo),
                                    nullptr, deviceInfo, "app");
  std::optional<bool> completed;
  manager.sendReceipts([&completed](bool succeeded) { completed = succeeded; });
  EXPECT_EQ(completed, true);
  EXPECT_NE(textOf(log->lines()).find("No pending receipts to send for "), std::string::npos);
}

const Response kAccepted{.body = R"({"code":7})"};

// What one push brings about on a host that has set up both modules, up to what `prepare` changes.
std::string story(const Dictionary& push, const Preparation& prepare = {},
                  const Response& answer = kAccepted) {
  Logger::setGlobalLoglevel(0);
  const LoopbackServer server({.handler = [&](const Request&) { return answer; }});
  const ReceiptHost host(server.url());
  if (prepare) prepare(host);
  const support::ScopedLogRecorder log;
  bool completed = false;
  DeliveryReceiptProcessor(std::make_unique<AppGroupSDK::ContextModuleChecker>(Logger::service()),
                           AppGroupSDK::AppIdProvider(), std::make_unique<DeliveryReceiptDataParser>())
      .process(makeRequest(push), nullptr,
               [&](const UserInfoChanges& changes) { completed = changes == std::nullopt; });
  EXPECT_TRUE(completed);
  const std::size_t requests = server.requests().size();
  if (requests > 0) support::eventually([&] { return log->mentions("ServiceManager "); });
  for (const auto& entry : log->entries()) EXPECT_EQ(entry.subsystem, "ServiceExtension");
  return replaced(textOf(log->lines()), server.url(), "SERVER") + "\n= " + std::to_string(requests) +
         " sent" + leftText();
}

const Dictionary kForBoth = receiptPush("m");
const Dictionary kForEngagement = receiptPush("m", 1);
const Dictionary kForMessaging = receiptPush("m", 2);

const std::string kEngagement = R"(
error Module: PN destination doesn't contain module: mobileAppMessaging
debug Module: PN destination contains module: quorixEngagement
debug DeliveryReceipt: Delivery Receipt feature flag is: 1 for configuration: quorixEngagement)";

const std::string kMessaging = R"(
debug Module: PN destination contains module: mobileAppMessaging
debug DeliveryReceipt: Delivery Receipt feature flag is: 1 for configuration: mobileAppMessaging
error Module: PN destination doesn't contain module: quorixEngagement)";

const std::string kStored = R"(
debug ServiceGeneral: Conversion from dictionary to JSON: {}
debug DeliveryReceipt: No DeliveryReceipts in store
debug DeliveryReceipt: All receipts count before storing any new receipt is 0
debug DeliveryReceipt: DeliveryReceipts LIST saved with result: success)";

const std::string kFetched = R"(
debug DeliveryReceipt: DeliveryReceipts fetched for status: 1 with result: []
debug DeliveryReceipt: DeliveryReceipts fetched for status: 0 with result: LIST)";

const std::string kEngagementSends =
    R"(
debug DeliveryReceipt: Sending DeliveryReceipt request: POST SERVER/devicestatistics/v1/analytic )"
    "[Authorization, Content-Type, User-Agent, X-Subscriber-Token] SIZE bytes";

const std::string kMessagingSends = R"(
debug DeliveryReceipt: Sending DeliveryReceipt request: POST SERVER/platform/messaging/mobileapp/v1/events/)"
                                    "engagement [Authorization, Content-Type, x-vlto-mobile-app-id, "
                                    "x-vlto-tenant-id] SIZE bytes";

const std::string kAcknowledged = R"(
debug DeliveryReceipt: DeliveryReceiptRequest is successful: code: 7, message: nil, requestId: nil, without a body
debug DeliveryReceipt: DeliveryReceipts LIST saved with result: success
debug DeliveryReceipt: DeliveryReceipts LIST sent
debug Network: ServiceManager success code: 7, message: nil, requestId: nil, without a body
= 1 sent, none left)";

const std::string kMarked = R"(
debug DeliveryReceipt: DeliveryReceipts LIST updated status: 1 with result: success
debug DeliveryReceipt: DeliveryReceipts LIST marked failed with result: success)";

const std::string kEngagementFailed = R"(
error DeliveryReceipt: Failed to send delivery receipts using manager: QXEDeliveryReceiptManager
default DeliveryReceipt: Some delivery receipts failed)";

const std::string kMessagingFailed = R"(
error DeliveryReceipt: Failed to send delivery receipts using manager: MAMDeliveryReceiptManager
default DeliveryReceipt: Some delivery receipts failed)";

TEST(ReceiptLogTest, WhoIsNotMeantGetsNoReceipt) {
  EXPECT_EQ(story(kForBoth.setting("_sid", "VTQ")), R"(
debug DeliveryReceipt: Not sending delivery receipt as it is a non VTQX push
debug ServiceWorker: Backing out as shouldProceed() returned false, class=DeliveryReceiptProcessor
= 0 sent, none left)");
  EXPECT_EQ(story(kForBoth.removing("_m")), R"(
error DeliveryReceipt: Missing required messageId so unable to generate delivery receipt
error DeliveryReceipt: Missing required values to generate delivery receipt event
= 0 sent, none left)");
  EXPECT_EQ(story(kForBoth.setting("_mt", 1)), R"(
error DeliveryReceipt: Missing required messageType so unable to generate delivery receipt
error DeliveryReceipt: Missing required values to generate delivery receipt event
= 0 sent, none left)");
  EXPECT_EQ(story(receiptPush("m", 0)), R"(
error Module: PN destination doesn't contain module: mobileAppMessaging
error Module: PN destination doesn't contain module: quorixEngagement
debug DeliveryReceipt: No delivery receipt managers available
= 0 sent, none left)");
}

TEST(ReceiptLogTest, WithTheFlagOffOrNoApplicationIdNothingIsStored) {
  const std::string bothOff = R"(
debug Module: PN destination contains module: mobileAppMessaging
debug DeliveryReceipt: Delivery Receipt feature flag is: FLAG for configuration: mobileAppMessaging
debug Module: PN destination contains module: quorixEngagement
debug DeliveryReceipt: Delivery Receipt feature flag is: FLAG for configuration: quorixEngagement
debug DeliveryReceipt: No delivery receipt managers available
= 0 sent, none left)";
  const auto off = [](const ReceiptHost&) {
    ReceiptHost::setFeature(AppGroupSDK::FeatureFlagStatus::disabled);
  };
  EXPECT_EQ(story(kForBoth, off), replaced(bothOff, "FLAG", "0"));
  const auto noFlag = [](const ReceiptHost& host) {
    std::filesystem::remove(host.bundle().file("com.veltro.qx.extensionsdk.featureConfigDetail.data"));
  };
  EXPECT_EQ(story(kForBoth, noFlag), replaced(bothOff, "FLAG", "nil"));
  const auto noIds = [](const ReceiptHost&) {
    AppGroupSDK::ModuleAppMappingStore().saveModelData(
        AppGroupSDK::ModuleAppMappings(std::vector<AppGroupSDK::ModuleAppMapping>()));
  };
  EXPECT_EQ(story(kForBoth, noIds), R"(
debug Module: PN destination contains module: mobileAppMessaging
debug DeliveryReceipt: Delivery Receipt feature flag is: 1 for configuration: mobileAppMessaging
error DeliveryReceipt: Unable to initialize DeliveryReceiptManagerProvider: No app ID found for module mobileAppMessaging
debug Module: PN destination contains module: quorixEngagement
debug DeliveryReceipt: Delivery Receipt feature flag is: 1 for configuration: quorixEngagement
error DeliveryReceipt: Unable to initialize DeliveryReceiptManagerProvider: No app ID found for module quorixEngagement
debug DeliveryReceipt: No delivery receipt managers available
= 0 sent, none left)");
}

TEST(ReceiptLogTest, WhatIsAcknowledgedIsRemoved) {
  EXPECT_EQ(story(kForEngagement), kEngagement + kStored + kFetched + kEngagementSends + kAcknowledged);
  EXPECT_EQ(story(kForMessaging), kMessaging + kStored + kFetched + kMessagingSends + kAcknowledged);
  const std::string withoutContext =
      replaced(kEngagement, "\ndebug Module: PN destination contains module: quorixEngagement", "");
  EXPECT_EQ(story(kForBoth.removing("_co")),
            withoutContext + kStored + kFetched + kEngagementSends + kAcknowledged);
}

TEST(ReceiptLogTest, AnAnswersNodesOfAnotherShapeCountAsAbsent) {
  const Response answer{.body = R"({"code":7,"nodes":[{"version":"1","response":{"status":207}}]})"};
  EXPECT_EQ(story(kForMessaging, {}, answer),
            kMessaging + kStored + kFetched + kMessagingSends +
                "\ndebug DeliveryReceipt: MAMEventResponse without version: expected an integer, found text" +
                replaced(kAcknowledged, "without a body", "without a body, node: 207"));
}

TEST(ReceiptLogTest, WhatIsNotAcknowledgedIsMarkedFailed) {
  EXPECT_EQ(story(kForEngagement, {}, {.status = 503, .body = "busy"}), kEngagement + kStored + kFetched +
                                                                            kEngagementSends + R"(
error DeliveryReceipt: DeliveryReceiptRequest failed with error: Failed with status code: 503 and data 4 bytes.
error DeliveryReceipt: DeliveryReceiptRequest failed with error details: status 503, body 4 bytes)" +
                                                                            kMarked + kEngagementFailed + R"(
error Network: ServiceManager NetworkExecutor error Failed with status code: 503 and data 4 bytes.
= 1 sent, 1 failed)");
  EXPECT_EQ(story(kForMessaging, {}, {.body = R"({"code":"7"})"}), kMessaging + kStored + kFetched +
                                                                       kMessagingSends + R"(
error DeliveryReceipt: DeliveryReceiptRequest failed with error: Error decoding data /code: expected an integer, found text.
error DeliveryReceipt: DeliveryReceiptRequest failed with error details: /code: expected an integer, found text)" +
                                                                       kMarked + kMessagingFailed + R"(
error Network: ServiceManager ResponseDecoder error Error decoding data /code: expected an integer, found text.
= 1 sent, 1 failed)");
  // An error of the platform has no details.
  EXPECT_EQ(story(kForEngagement, {}, Response::redirect(307, "/")), kEngagement + kStored + kFetched +
                                                                         kEngagementSends + R"(
error DeliveryReceipt: DeliveryReceiptRequest failed with error: 127.0.0.1: more than 20 redirects)" +
                                                                         kMarked + kEngagementFailed + R"(
error Network: ServiceManager NetworkExecutor error 127.0.0.1: more than 20 redirects
= 21 sent, 1 failed)");
}

// What the host has stored about the device, at a place where nobody listens.
Preparation device(const std::optional<std::string>& subscriber, const std::optional<std::string>& tenant,
                   const std::optional<std::string>& session,
                   const std::string& baseUrl = "http://127.0.0.1:1") {
  return [=](const ReceiptHost&) {
    AppGroupSDK::AppDeviceInfoStore().saveModelData(
        AppGroupSDK::AppDeviceInfo(baseUrl, "a", "d", "access-secret", "5", subscriber, tenant, session));
  };
}

std::string abandoned(const std::string& module, const std::string& reason, const std::string& failure) {
  return module + kStored + kFetched + reason + failure + "\n= 0 sent, 1 pending";
}

TEST(ReceiptLogTest, AMissingValueAbandonsTheSendAndKeepsTheReceipts) {
  const auto noDevice = [](const ReceiptHost& host) {
    std::filesystem::remove(host.bundle().file("com.veltro.qx.extensionsdk.appDeviceInfo.data"));
  };
  const std::string noToken = R"(
error DeliveryReceipt: AccessToken not available
error DeliveryReceipt: QXE Request Headers not available
error DeliveryReceipt: DeliveryReceiptRequest creation failure)";
  const std::string noURL = R"(
error DeliveryReceipt: Base URL not available
error DeliveryReceipt: DeliveryReceiptRequest creation failure)";
  const std::pair<Preparation, std::string> engagement[] = {{device({}, "t", "s"), noToken},
                                                            {device("", "t", "s"), noToken},
                                                            {device("s", "t", "s", ""), noURL},
                                                            {device("s", "t", "s", "http:///x"), noURL},
                                                            {noDevice, R"(
error DeliveryReceipt: DeliveryReceiptEvent creation failure: applicationId is missing
error DeliveryReceipt: AccessToken not available)" + noURL}};
  for (const auto& [prepare, reason] : engagement) {
    EXPECT_EQ(story(kForEngagement, prepare), abandoned(kEngagement, reason, kEngagementFailed));
  }
  const std::pair<Preparation, std::string> messaging[] = {
      {device("s", {}, "s"), R"(
error DeliveryReceipt: UMA TenantId not available
error DeliveryReceipt: MAM Request Headers not available
error DeliveryReceipt: DeliveryReceiptRequest creation failure)"},
      {device("s", "t", "s", "foo"), noURL},
      {device("s", "t", "s", "ftp://127.0.0.1/"), noURL},
      {device("s", "t", {}),
       "\nerror DeliveryReceipt: MAMDeliveryReceiptEvent creation failure: sessionId is missing"},
      {noDevice, "\nerror DeliveryReceipt: MAMDeliveryReceiptEvent creation failure: deviceId is missing"}};
  for (const auto& [prepare, reason] : messaging) {
    EXPECT_EQ(story(kForMessaging, prepare), abandoned(kMessaging, reason, kMessagingFailed));
  }
}

TEST(ReceiptLogTest, AReceiptThatCannotBeStoredIsSentAllTheSame) {
  // No file takes the place of a directory.
  const auto unwritable = [](const ReceiptHost& host) {
    std::filesystem::create_directory(
        host.bundle().file("com.veltro.qx.extensionsdk.deliveryReceipt.quorixEngagement.qxe-app.data"));
  };
  EXPECT_EQ(story(kForEngagement, unwritable),
            kEngagement + replaced(kStored, "success", "writeFailed") + R"(
error DeliveryReceipt: Failed to store receipt for manager: QXEDeliveryReceiptManager with result: false)" +
                kFetched + kEngagementSends +
                replaced(kAcknowledged, "result: success", "result: writeFailed"));
}

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

// A filtered-out line costs no text: neither how a line of this push begins nor how it ends is ever made.
TEST(ReceiptLogTest, AtLevelNoneNoTextIsMade) {
  if (!support::FreedTexts::areFound()) GTEST_SKIP() << "A sanitizer has the operators of its own";
  for (const int status : {200, 503}) {
    const LoopbackServer server({.handler = [status](const Request& request) -> std::optional<Response> {
      return Response{.status = request.method == "GET" ? 404 : status, .body = "{}"};
    }});
    const ReceiptHost host(server.url());
    const auto userInfo = receiptPush("m").setting(
        "_rf", support::dictionary(support::carousel(support::plainPanels(1, server.url("/none.png")))));
    const auto push = [&](LogLevel level) {
      Logger::setGlobalLoglevel(static_cast<std::int64_t>(level));
      const Deliveries deliveries;
      const auto service = std::make_shared<TestService>(VTNotificationServiceConfig{level, true});
      service->didReceiveNotificationRequest(makeRequest(userInfo), deliveries.handler());
      EXPECT_TRUE(deliveries.waitFor(1));
    };
    std::vector<std::string> texts;
    {
      const support::ScopedLogRecorder log;
      push(LogLevel::debug);
      constexpr std::size_t kLength = 20;
      for (const std::string& message : log->messages()) {
        if (message.size() < kLength) continue;
        texts.push_back(message.substr(0, kLength));
        texts.push_back(message.substr(message.size() - kLength));
      }
      EXPECT_GT(texts.size(), 40U);
    }
    const support::FreedTexts freed(std::move(texts));
    push(LogLevel::none);
    EXPECT_EQ(support::FreedTexts::found(), "") << status;
  }
}

}  // namespace
}  // namespace QXExtensionSDK
