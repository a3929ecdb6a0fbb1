#include "QXExtensionSDK/receipts/DeliveryReceiptProcessor.h"

#include <array>
#include <utility>

#include "AppGroupSDK/context/PNContextUtils.h"
#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"
#include "QXExtensionSDK/payload/SenderGate.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptManagerProvider.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/dispatch/DispatchGroup.h"
#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/files/Container.h"
#include "QXPlatform/foundation/RawValues.h"

namespace QXExtensionSDK {

namespace {

using AppGroupSDK::ExtensionModuleName;
using AppGroupSDK::FeatureFlagStatus;

constexpr std::array kModules{ExtensionModuleName::mobileAppMessaging, ExtensionModuleName::quorixEngagement};

// The flag as a piece of a log line; the text is made only if the line is.
struct FlagText {
  const std::optional<AppGroupSDK::DeliveryReceiptConfig>& config;

  std::string description() const {
    return config ? std::to_string(QXPlatform::rawValue(config->featureFlag())) : "nil";
  }
};

bool featureIsEnabled(const DeliveryReceiptConfigProviding& configuration) {
  const auto config = configuration.deliveryReceiptConfig();
  Logger::service().debug(LogCategory::deliveryReceipt,
                          "Delivery Receipt feature flag is: ", FlagText{config},
                          " for configuration: ", configuration);
  return config && config->featureFlag() == FeatureFlagStatus::enabled;
}

std::shared_ptr<DeliveryReceiptManaging> makeManager(ExtensionModuleName module,
                                                     AppGroupSDK::AppIdProvider& appIdProvider) {
  auto appId = appIdProvider.appIdForModule(module);
  if (!featureIsEnabled(DeliveryReceiptConfigStore(module, appId))) return nullptr;
  if (!appId) {
    Logger::service().error(
        LogCategory::deliveryReceipt,
        "Unable to initialize DeliveryReceiptManagerProvider: No app ID found for module ",
        stringValue(module));
    return nullptr;
  }
  return DeliveryReceiptManagerProvider(module, *std::move(appId)).makeManager();
}

// The modules of one push at work. All that reads or writes the shared container runs on the queue, since
// another process may hold the container for any time. Shared with what is still on its way when the
// processor has stopped waiting.
class StatusRun {
 public:
  StatusRun(DeliveryReceiptData data, AppGroupSDK::PNContextInfo context,
            std::shared_ptr<const AppGroupSDK::ContextModuleChecking> contextModuleChecker,
            std::shared_ptr<AppGroupSDK::AppIdProvider> appIdProvider)
      : data_(std::move(data)),
        context_(std::move(context)),
        contextModuleChecker_(std::move(contextModuleChecker)),
        appIdProvider_(std::move(appIdProvider)) {}

  static void start(const std::shared_ptr<StatusRun>& run) {
    // Without a container there is nothing to be held up by, and no need for another thread.
    const QXPlatform::ContainerLookupScope lookedUpOnce;
    if (AppGroupSDK::AppGroupDirectoryProvider().containerURL()) {
      run->queue_.async(run->group_, [run] { storeAndSendAll(run); });
    } else {
      run->queue_.sync([&run] { storeAndSendAll(run); });
    }
  }

  bool wait(QXPlatform::Clock::TimePoint deadline) const { return group_.wait(deadline); }

  bool someFailed() const {
    bool failed = false;
    queue_.sync([this, &failed] { failed = someFailed_; });
    return failed;
  }

 private:
  static void storeAndSendAll(const std::shared_ptr<StatusRun>& run) {
    const QXPlatform::ContainerLookupScope lookedUpOnce;
    auto managers = run->makeManagers();
    if (managers.empty()) {
      Logger::service().debug(LogCategory::deliveryReceipt, "No delivery receipt managers available");
      return;
    }
    // The last one needs no thread of its own.
    const auto last = std::move(managers.back());
    managers.pop_back();
    for (const auto& manager : managers) {
      run->group_.enter();
      run->queue_.async([run, manager] { storeAndSend(run, *manager); });
    }
    run->group_.enter();
    storeAndSend(run, *last);
  }

  std::vector<std::shared_ptr<DeliveryReceiptManaging>> makeManagers() {
    std::vector<std::shared_ptr<DeliveryReceiptManaging>> managers;
    for (const auto module : kModules) {
      if (!contextModuleChecker_->shouldProceed(module, context_)) continue;
      if (auto manager = makeManager(module, *appIdProvider_)) managers.push_back(std::move(manager));
    }
    return managers;
  }

  // In the group, which is left when the outcome is known.
  static void storeAndSend(const std::shared_ptr<StatusRun>& run, DeliveryReceiptManaging& manager) {
    const bool stored = manager.storeReceipt(run->data_);
    if (!stored) {
      Logger::service().error(LogCategory::deliveryReceipt, "Failed to store receipt for manager: ", manager,
                              " with result: ", stored);
    }
    manager.sendReceipts([run, name = manager.description()](bool succeeded) {
      if (succeeded) return run->group_.leave();
      Logger::service().error(LogCategory::deliveryReceipt,
                              "Failed to send delivery receipts using manager: ", name);
      run->queue_.asyncBarrier([run] {
        run->someFailed_ = true;
        run->group_.leave();
      });
    });
  }

  const DeliveryReceiptData data_;
  const AppGroupSDK::PNContextInfo context_;
  const std::shared_ptr<const AppGroupSDK::ContextModuleChecking> contextModuleChecker_;
  const std::shared_ptr<AppGroupSDK::AppIdProvider> appIdProvider_;
  const QXPlatform::DispatchGroup group_;
  const QXPlatform::DispatchQueue queue_{"com.vtqx.status.queue",
                                         QXPlatform::DispatchQueue::Attribute::concurrent};
  bool someFailed_ = false;  // written in a barrier of queue_
};

}  // namespace

DeliveryReceiptProcessor::DeliveryReceiptProcessor(
    std::unique_ptr<const AppGroupSDK::ContextModuleChecking> contextModuleChecker,
    AppGroupSDK::AppIdProvider appIdProvider, std::unique_ptr<const DeliveryReceiptDataParsing> dataParser)
    : appIdProvider_(std::make_shared<AppGroupSDK::AppIdProvider>(std::move(appIdProvider))),
      contextModuleChecker_(std::move(contextModuleChecker)),
      dataParser_(std::move(dataParser)) {}

void DeliveryReceiptProcessor::process(
    const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
    const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& /*content*/,
    ProcessingCompletion completion) {
  const auto deadline = QXPlatform::Clock::current().now() + timeoutIntervalForProcessing_;
  const QXPlatform::Dictionary userInfo =
      request->content != nullptr ? request->content->userInfo() : QXPlatform::Dictionary();
  if (isVtqxPush(userInfo)) {
    run(userInfo, deadline);
  } else {
    logBackingOut(description());
  }
  completion(userInfoChanges_);
}

bool DeliveryReceiptProcessor::isVtqxPush(const QXPlatform::Dictionary& userInfo) const {
  if (VTQXUtility::isVTQXPush(userInfo)) return true;
  Logger::service().debug(LogCategory::deliveryReceipt,
                          "Not sending delivery receipt as it is a non VTQX push");
  return false;
}

bool DeliveryReceiptProcessor::isFeatureEnabled(const DeliveryReceiptConfigProviding& configuration) const {
  return featureIsEnabled(configuration);
}

void DeliveryReceiptProcessor::run(const QXPlatform::Dictionary& userInfo,
                                   QXPlatform::Clock::TimePoint deadline) const {
  const Logger& logger = Logger::service();
  auto data = dataParser_->parse(userInfo);
  if (!data) {
    logger.error(LogCategory::deliveryReceipt, "Missing required values to generate delivery receipt event");
    return;
  }
  const auto run = std::make_shared<StatusRun>(
      *std::move(data), AppGroupSDK::PNContextUtils::parseContextInfoFromUserInfo(userInfo),
      contextModuleChecker_, appIdProvider_);
  StatusRun::start(run);
  if (!run->wait(deadline)) {
    logger.error(LogCategory::deliveryReceipt, "Delivery receipt processing timed out");
  } else if (run->someFailed()) {
    logger.warn(LogCategory::deliveryReceipt, "Some delivery receipts failed");
  }
}

}  // namespace QXExtensionSDK
