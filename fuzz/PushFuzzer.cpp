#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "AppGroupSDK/AppGroupSDK.h"
#include "QXExtensionSDK/QXExtensionSDK.h"
#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/log/Log.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/notifications/ServiceExtensionHost.h"
#include "QXTestSupport/TemporaryContainer.h"
#include "fuzz/ScriptedServer.h"

namespace {

using namespace AppGroupSDK;
using QXPlatform::fatalError;

constexpr std::string_view kSecret = "access-secret";
constexpr auto kTimeLimit = std::chrono::seconds(30);

class NotificationService final : public QXExtensionSDK::VTQXNotificationService {
 public:
  QXExtensionSDK::VTQXNotificationServiceConfig vtqxProvideConfig() override {
    return {QXExtensionSDK::LogLevel::debug, true};
  }
};

class CheckedLog final : public QXPlatform::LogSink {
 public:
  void write(const QXPlatform::LogRecord& record) override {
    if (record.message.find(kSecret) != std::string_view::npos) fatalError("A secret in the log");
  }
};

// A host that has switched receipts on for both modules, and a back end that answers as the input has it.
struct Host {
  Host() {
    AppDeviceInfoStore().saveModelData(
        {server.url(), "app", "device", std::string(kSecret), "1", "subscriber", "tenant", "session"});
    FeatureConfigDetailStore().saveModelData(
        FeatureConfigDetail(DeliveryReceiptConfig(FeatureFlagStatus::enabled)));
    for (const auto module :
         {ExtensionModuleName::quorixEngagement, ExtensionModuleName::mobileAppMessaging}) {
      AppIdProvider().storeAppId("app", module);
    }
  }

  void forgetReceipts() const {
    for (const auto& entry : std::filesystem::directory_iterator(container.path())) {
      if (entry.path().filename().string().find("deliveryReceipt") != std::string::npos) remove(entry.path());
    }
  }

  QXTestSupport::TemporaryContainer container;
  QXFuzz::ScriptedServer server;
  CheckedLog log;
  QXPlatform::ScopedLogSink logging{log};
  QXPlatform::ServiceExtensionHost extension{[] { return std::make_shared<NotificationService>(); },
                                             kTimeLimit};
};

std::string withServer(std::string text, const std::string& url) {
  constexpr std::string_view kPlace = "http://qx";
  for (std::size_t at = text.find(kPlace); at != std::string::npos; at = text.find(kPlace, at + 1)) {
    text.replace(at, kPlace.size(), url);
  }
  return text;
}

void check(const QXPlatform::UNNotificationRequest& request,
           const QXPlatform::ServiceExtensionResult& shown) {
  if (shown.outcome != QXPlatform::ServiceExtensionResult::Outcome::delivered) fatalError("Shown too late");
  const auto original = request.content->snapshot();
  if (shown.content.title != original.title || shown.content.body != original.body) fatalError("Other texts");
  for (const auto& [key, value] : original.userInfo) {
    if (key == "_rf" || key == "$_rf") continue;
    const QXPlatform::Value* kept = shown.content.userInfo.find(key);
    if (kept == nullptr || !(*kept == value)) fatalError("An entry is lost");
  }
}

}  // namespace

// A push from its bytes to what is shown, with whatever the network answers: the push, a NUL, the answer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  // Nothing is loaded from the world outside.
  const std::string lower = QXPlatform::lowercased(input);
  if (lower.find("https") != std::string::npos || lower.find(kSecret) != std::string::npos) return 0;
  static Host host;
  const std::size_t end = std::min(input.find('\0'), input.size());
  const auto push = QXPlatform::parseJSON(withServer(input.substr(0, end), host.server.url()));
  if (!push) return 0;
  const auto request = QXPlatform::notificationRequestFromJSON(*push);
  if (!request) return 0;
  host.server.answer(std::string_view(input).substr(std::min(end + 1, input.size())));
  check(**request, host.extension.run(*request));
  if (!QXPlatform::Activity::waitUntilNone(QXPlatform::Clock::current().now() + kTimeLimit)) {
    fatalError("Work that does not end");
  }
  host.forgetReceipts();
  return 0;
}
