#include "QXExtensionSDK/runtime/VTQXNotificationService.h"

#include "QXExtensionSDK/QXExtensionSDK.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "tests/QXExtensionSDK/ServiceTestKit.h"
#include "tests/support/Deflate.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using QXPlatform::Dictionary;
using QXPlatform::LogType;
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
  const std::string packed = support::packed(R"({"vt":{}})");
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

TEST_F(VTQXNotificationServiceTest, AHookThatThrowsAnythingElseEndsTheProcess) {
  const auto service = std::make_shared<TestService>(
      VTNotificationServiceConfig(LogLevel::error, true),
      [](const Content&, const ClientContentHandler&) { throw std::runtime_error("the host's own"); });
  EXPECT_DEATH(service->callClientDidReceiveRequest(makeRequest({}), nullptr, [](const auto&) {}), "");
}

TEST_F(VTQXNotificationServiceTest, WithoutAHostsOwnConfigurationTheEnvironmentSetsTheLevel) {
  // It is read once in the life of a process.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const support::ScopedEnvironment level("QX_LOG_LEVEL", "warn");
  EXPECT_EXIT(std::exit(VTQXNotificationService().vtqxProvideConfig().logLevel() == LogLevel::warn ? 0 : 1),
              testing::ExitedWithCode(0), "");
}

TEST_F(VTQXNotificationServiceTest, ABlockedHookHoldsUpNeitherDecompressionNorExpiry) {
  std::promise<void> release;
  Deliveries deliveries;
  const auto service = std::make_shared<TestService>(
      VTNotificationServiceConfig(LogLevel::debug, false),
      [released = release.get_future().share()](const Content&, const ClientContentHandler& handler) {
        released.wait();
        handler(Dictionary{{"host", "late"}});
      });
  service->didReceiveNotificationRequest(
      makeRequest({{"_sid", "vtqx"}, {"$_rf", support::packed(R"({"vt":{}})")}}), deliveries.handler());
  EXPECT_TRUE(log_->waitFor("Carousel Thumbnail flag disabled"));
  service->serviceExtensionTimeWillExpire();
  ASSERT_TRUE(deliveries.waitFor(1));
  EXPECT_FALSE(deliveries.at(0).userInfo.contains("_rf")) << "collected changes are not merged on expiry";
  release.set_value();
  ASSERT_TRUE(deliveries.waitFor(2));
  EXPECT_TRUE(deliveries.at(1).userInfo.contains("host"));
  EXPECT_TRUE(deliveries.at(1).userInfo.contains("_rf"));
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

// Read before any test or configuration changes it.
const std::int64_t kInitialLevel = Logger::globalLoglevel();

TEST(LoggerTest, TheLevelDecidesWhichMessagesAreWritten) {
  const std::vector<std::vector<std::string>> written{
      {"d", "w", "e", "f"}, {"w", "e", "f"}, {"e", "f"}, {"f"}, {}, {}};
  EXPECT_EQ(kInitialLevel, 2) << "before a configuration only errors and faults pass";
  for (std::size_t level = 0; level < written.size(); ++level) {
    const support::ScopedLogRecorder log;
    Logger::setGlobalLoglevel(static_cast<std::int64_t>(level));
    Logger::service().debug(LogCategory::module, "d");
    Logger::service().warnWithCatgeory(LogCategory::module, "w");
    Logger::service().errorWithCatgeory(LogCategory::module, "e");
    Logger::service().fault(LogCategory::module, "f");
    EXPECT_EQ(log->messages(), written[level]) << "level " << level;
  }
}

TEST(LoggerTest, RecordsCarrySubsystemCategoryTypeAndJoinedPieces) {
  const support::ScopedLogRecorder log;
  _VTQX_Internal_Logger::setGlobalLoglevel(0);
  const std::string text = "text";
  const QXPlatform::Dictionary dictionary{{"a", 1}};
  Logger::service().warn(LogCategory::serviceWorker, "n=", 5, " ok=", true, " ", text);
  Logger::content().debug(LogCategory::ui, dictionary);
  const std::vector<support::LogEntry> expected{
      {"ServiceExtension", "ServiceWorker", LogType::default_, "n=5 ok=true text"},
      {"ContentExtension", "UI", LogType::debug, R"({"a":1})"}};
  EXPECT_EQ(log->entries(), expected);
}

TEST(LoggerTest, AFilteredMessageIsNeverBuilt) {
  struct Tattler {
    std::string description() const {
      ADD_FAILURE() << "built although filtered out";
      return {};
    }
  };
  Logger::setGlobalLoglevel(4);
  Logger::service().fault(LogCategory::module, Tattler{});
}

TEST(LoggerTest, CategoriesAndLevelsComeFromTheirNumbers) {
  EXPECT_EQ(categoryString(static_cast<LogCategory>(6)), "CarouselAttachment");
  EXPECT_DEATH(categoryString(static_cast<LogCategory>(9)), "log category");
  EXPECT_DEATH(categoryString(static_cast<LogCategory>(-1)), "log category");
  EXPECT_EQ(makeLogLevel(4), LogLevel::none);
  EXPECT_EQ(makeLogLevel(5), std::nullopt);
  EXPECT_EQ(makeLogLevel(-1), std::nullopt);
}

}  // namespace
}  // namespace QXExtensionSDK
