// What becomes of one push's receipts, with every line that is logged on the way: its type, its category and
// its place in the order.

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <regex>

#include "QXExtensionSDK/receipts/DeliveryReceiptProcessor.h"
#include "QXExtensionSDK/receipts/MAMDeliveryReceipts.h"
#include "QXExtensionSDK/receipts/QXEDeliveryReceipts.h"
#include "tests/QXExtensionSDK/receipts/ReceiptTestKit.h"
#include "tests/support/AllocationCount.h"

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

class NothingPending final : public DeliveryReceiptRepository {
 public:
  AppGroupSDK::DataStoreStatus storeReceipt(std::string_view, const std::optional<std::string>&,
                                            std::string_view, const std::optional<Dictionary>&) override {
    return AppGroupSDK::DataStoreStatus::success;
  }
  std::optional<Receipts> fetchPendingReceipts() override { return Receipts(); }
  void handleSendResult(bool, const Receipts&, const ReceiptCompletion&) override {}
};

// Not reached by a push of a process's own.
TEST(ReceiptLogTest, ManagersWithNothingToSendOrNoApplicationIdSendNothing) {
  class NoHandler final : public DeliveryReceiptHandling {
   public:
    void send(const ServiceProtocol&, ReceiptCompletion) const override { ADD_FAILURE() << "sent"; }
  };
  Logger::setGlobalLoglevel(0);
  const ReceiptHost host("http://127.0.0.1:1");
  const auto info = std::make_shared<AppDeviceInfoProvider>(kQXE, appIdOf(kQXE));
  QXEDeliveryReceiptManager engagement(std::make_shared<NothingPending>(),
                                       std::make_unique<const QXEDeliveryReceiptPayloadCreator>(info),
                                       std::make_unique<NoHandler>(), info);
  MAMDeliveryReceiptManager messaging(std::make_shared<NothingPending>(),
                                      std::make_unique<const MAMDeliveryReceiptPayloadCreator>(info),
                                      std::make_unique<NoHandler>(), info, "");
  const support::ScopedLogRecorder log;
  std::string results;
  const auto completion = [&](bool succeeded) { results += succeeded ? '+' : '-'; };
  for (ReceiptManager* manager : std::initializer_list<ReceiptManager*>{&engagement, &messaging}) {
    manager->sendReceipts(completion);
    manager->sendReceipts({}, completion);
  }
  messaging.ReceiptManager::sendReceipts(receipts(1, 1), completion);
  EXPECT_EQ(results, "+-+--");
  EXPECT_EQ(textOf(log->lines()), R"(
debug DeliveryReceipt: No pending receipts to send for QXE
debug DeliveryReceipt: No pending receipts to create MAM delivery receipt payload
debug DeliveryReceipt: No pending receipts to send for MAM
debug DeliveryReceipt: No pending receipts to create MAM delivery receipt payload
error DeliveryReceipt: UMA ApplicationId not available
error DeliveryReceipt: MAM Request Headers not available
error DeliveryReceipt: DeliveryReceiptRequest creation failure)");
}

// A filtered-out line costs no text.
TEST(ReceiptLogTest, AtLevelNoneNoTextIsMade) {
  class Configuration final : public DeliveryReceiptConfigProviding {
   public:
    std::optional<AppGroupSDK::DeliveryReceiptConfig> deliveryReceiptConfig() const override {
      return AppGroupSDK::DeliveryReceiptConfig(AppGroupSDK::FeatureFlagStatus::enabled);
    }
    std::string description() const override { return std::string(100, 'x'); }
  };
  class Refusal final : public DeliveryReceiptSending {
   public:
    void send(const ServiceProtocol&, ServiceManager::Completion completion) const override {
      static const ServiceManager::Answer answer = SendError(ServiceError(ServiceError::Failed{503, {}}));
      completion(answer);
    }
  };
  const ReceiptHost host("http://127.0.0.1:1");
  const DeliveryReceiptProcessor processor(nullptr, AppGroupSDK::AppIdProvider(), nullptr);
  const Configuration configuration;
  const DeliveryReceiptHandler handler(std::make_unique<const Refusal>());
  const MAMDeliveryReceiptRequest request(*QXPlatform::URL::parse("http://127.0.0.1:1"), {}, {});
  const Dictionary foreign = kForBoth.removing("_sid");
  Logger::setGlobalLoglevel(4);
  const auto linesOfAllKinds = [&] {
    processor.isVtqxPush(foreign);
    processor.isFeatureEnabled(configuration);
    DeliveryReceiptDataParser().parse({});
    handler.send(request, [](bool succeeded) { EXPECT_FALSE(succeeded); });
  };
  linesOfAllKinds();
  const support::AllocationCount allocations;
  linesOfAllKinds();
  EXPECT_LE(allocations.count(), 1U) << "the completion that the handler passes on";
}

}  // namespace
}  // namespace QXExtensionSDK
