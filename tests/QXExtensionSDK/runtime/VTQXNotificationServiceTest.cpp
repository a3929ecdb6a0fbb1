#include "QXExtensionSDK/runtime/VTQXNotificationService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "QXPlatform/foundation/Base64.h"
#include "tests/QXExtensionSDK/ServiceTestKit.h"
#include "tests/support/Deflate.h"
#include "tests/support/RecordingLogSink.h"

namespace QXExtensionSDK {
namespace {

using QXPlatform::Dictionary;
using Content = std::shared_ptr<QXPlatform::UNMutableNotificationContent>;

class VTQXNotificationServiceTest : public testing::Test {
 protected:
  VTQXNotificationServiceTest() { Logger::setGlobalLoglevel(static_cast<std::int64_t>(LogLevel::error)); }

  QXPlatform::NotificationProperties deliver(const std::shared_ptr<VTQXNotificationService>& service,
                                             const Dictionary& userInfo) {
    Deliveries deliveries;
    service->didReceiveNotificationRequest(makeRequest(userInfo), deliveries.handler());
    EXPECT_TRUE(deliveries.waitFor(1));
    return deliveries.count() > 0 ? deliveries.at(0) : QXPlatform::NotificationProperties();
  }

  support::ScopedLogRecorder log_;
};

TEST_F(VTQXNotificationServiceTest, TheBaseClassDeliversUnchangedAndSilently) {
  EXPECT_EQ(deliver(std::make_shared<VTQXNotificationService>(), {{"a", 1}}).userInfo,
            (Dictionary{{"a", 1}}));
  EXPECT_EQ(log_->messages(), std::vector<std::string>()) << "the default level lets nothing through";
}

TEST_F(VTQXNotificationServiceTest, TheHooksChangesReachUserInfoForEverySender) {
  const auto service = std::make_shared<TestService>(
      VTNotificationServiceConfig(LogLevel::debug, true),
      [](const Content& content, const ClientContentHandler& handler) {
        content->setBody("from the host");
        std::thread([handler] { handler(Dictionary{{"host", true}}); }).detach();
      });
  const auto delivered = deliver(service, {{"_sid", "someone else"}});
  EXPECT_EQ(delivered.body, "from the host");
  EXPECT_EQ(delivered.userInfo, (Dictionary{{"_sid", "someone else"}, {"host", true}}));
  EXPECT_THAT(log_->lines(),
              testing::Contains("debug ServiceWorker: Backing out as shouldProceed() returned false, "
                                "class=AdvancedPushProcessor"));
}

// Every line of an ordinary push with its level and category, in the order in which the caller's thread and
// one processor alone write them.
TEST_F(VTQXNotificationServiceTest, AnOrdinaryPushLogsItsSteps) {
  const std::string packed = QXPlatform::encodeBase64(support::deflateRaw(R"({"vt":{}})"));
  const auto service = std::make_shared<TestService>(VTNotificationServiceConfig(LogLevel::debug, true));
  Logger::setGlobalLoglevel(static_cast<std::int64_t>(LogLevel::debug));
  deliver(service, {{"_sid", "VTQX"}, {"$_rf", packed}});
  std::vector<std::string> lines = log_->lines();
  std::erase_if(lines, [](const std::string& line) {
    return line.find(" DeliveryReceipt: ") != std::string::npos ||
           line.find(" Module: ") != std::string::npos ||
           line.ends_with("VTQXNotificationService vtqxDidReceiveRequest start");
  });
  EXPECT_THAT(lines, testing::ElementsAre(
                         "debug ServiceGeneral: VTQXNotificationService didReceiveNotificationRequest start",
                         "debug ServiceWorker: workerDidReceive(_:withContentHandler:) start",
                         "debug ServiceGeneral: Decorating decompressed field",
                         "debug Decompression: Deflate decompression strategy selected",
                         "debug Decompression: Deflate: Decompression start",
                         "debug Decompression: Deflate: Decoded char count=9",
                         "debug Decompression: Deflate: Decompression success",
                         "debug Decompression: Deflate: Deallocating destination buffer",
                         "debug Decompression: Adding decompressed field",
                         "debug CarouselAttachment: Carousel Media URL Extraction Failure"));
}

TEST_F(VTQXNotificationServiceTest, ARaisingHookIsAnEmptyChangeSet) {
  const auto service = std::make_shared<TestService>(
      VTNotificationServiceConfig(LogLevel::error, true), [](const Content&, const ClientContentHandler&) {
        throw QXPlatform::Exception("HostException", "index 7 beyond bounds");
      });
  EXPECT_EQ(deliver(service, {{"a", 1}}).userInfo, (Dictionary{{"a", 1}}));
  EXPECT_EQ(log_->messages(), std::vector<std::string>{
                                  "VTQXNotificationService exception in client code=index 7 beyond bounds"});
}

TEST_F(VTQXNotificationServiceTest, ABlockedHookHoldsUpNeitherDecompressionNorExpiry) {
  std::promise<void> release;
  Deliveries deliveries;
  const auto service = std::make_shared<TestService>(
      VTNotificationServiceConfig(LogLevel::debug, false),
      [&, released = release.get_future().share()](const Content&, const ClientContentHandler& handler) {
        released.wait();
        handler(Dictionary{{"host", "late"}});
      });
  const std::string packed = QXPlatform::encodeBase64(support::deflateRaw(R"({"vt":{}})"));
  service->didReceiveNotificationRequest(makeRequest({{"_sid", "vtqx"}, {"$_rf", packed}}),
                                         deliveries.handler());
  EXPECT_TRUE(log_->waitFor("Carousel Thumbnail flag disabled"));
  service->serviceExtensionTimeWillExpire();
  ASSERT_TRUE(deliveries.waitFor(1));
  EXPECT_EQ(deliveries.at(0).userInfo.find("_rf"), nullptr) << "collected changes are not merged on expiry";
  release.set_value();
  ASSERT_TRUE(deliveries.waitFor(2));
  EXPECT_EQ(deliveries.at(1).userInfo.find("host")->string(), "late");
  EXPECT_NE(deliveries.at(1).userInfo.find("_rf"), nullptr);
}

// The race detector's test: the hook rewrites userInfo over and over while the other processors read it.
TEST_F(VTQXNotificationServiceTest, AHookMayRewriteUserInfoWhileOthersReadIt) {
  const std::string packed = QXPlatform::encodeBase64(support::deflateRaw(R"({"vt":{"it":[]}})"));
  const auto service =
      std::make_shared<TestService>(VTNotificationServiceConfig(LogLevel::none, true),
                                    [](const Content& content, const ClientContentHandler& handler) {
                                      for (int i = 0; i < 200; ++i)
                                        content->setUserInfo(content->userInfo().setting("round", i));
                                      handler(Dictionary{{"done", true}});
                                    });
  for (int push = 0; push < 50; ++push) {
    const auto delivered = deliver(service, {{"_sid", "VTQX"}, {"$_rf", packed}});
    EXPECT_EQ(delivered.userInfo.find("round")->integer(), 199);
    EXPECT_EQ(delivered.userInfo.find("$_rf")->string(), "");
    EXPECT_EQ(delivered.userInfo.find("done")->boolean(), true);
  }
}

TEST_F(VTQXNotificationServiceTest, EveryRequestGetsAWorkerOfItsOwn) {
  const auto service = std::make_shared<TestService>();
  EXPECT_EQ(service->internalWorker(), nullptr);
  service->serviceExtensionTimeWillExpire();
  deliver(service, {});
  const auto first = service->internalWorker();
  deliver(service, {});
  EXPECT_NE(service->internalWorker(), first);
}

TEST_F(VTQXNotificationServiceTest, ThisSystemsPushesAreToldBySender) {
  const struct {
    Dictionary userInfo;
    bool ours;
  } table[] = {
      {{{"_sid", "VTQX"}}, true},   {{{"_sid", "vtqx"}}, true},
      {{{"_sid", "vTqX"}}, true},   {{{"_sid", "VTQX "}}, false},
      {{{"_sid", ""}}, false},      {{{"_sid", 1}}, false},
      {{{"_sid", nullptr}}, false}, {{}, false},
      {{{"_SID", "VTQX"}}, false},  {{{"_sid", "\u1e97vtqx"}}, false},
  };
  for (const auto& row : table) {
    EXPECT_EQ(_VTQX_Internal_VTQXUtility::isVTQXPushNotification(*makeRequest(row.userInfo)), row.ours)
        << row.userInfo.description();
  }
}

}  // namespace
}  // namespace QXExtensionSDK
