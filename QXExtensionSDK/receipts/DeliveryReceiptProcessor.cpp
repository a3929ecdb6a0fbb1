#include "QXExtensionSDK/receipts/DeliveryReceiptProcessor.h"

#include <array>
#include <utility>

#include "AppGroupSDK/context/PNContextUtils.h"
#include "QXExtensionSDK/payload/SenderGate.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptManagerProvider.h"
#include "QXExtensionSDK/runtime/Logger.h"
#include "platform/dispatch/DispatchGroup.h"
#include "platform/dispatch/DispatchQueue.h"

namespace QXExtensionSDK {

namespace {

using AppGroupSDK::ExtensionModuleName;
using AppGroupSDK::FeatureFlagStatus;

constexpr std::array kModules{ExtensionModuleName::mobileAppMessaging, ExtensionModuleName::quorixEngagement};

// The modules of one push at work. Shared with what is still on its way when the processor has stopped
// waiting.
class StatusRun {
 public:
  explicit StatusRun(DeliveryReceiptData data) : data_(std::move(data)) {}

  static void start(const std::shared_ptr<StatusRun>& run,
                    const std::shared_ptr<DeliveryReceiptManaging>& manager) {
    run->group_.enter();
    run->queue_.async([run, manager] { storeAndSend(run, manager); });
  }

  bool wait(platform::Clock::TimePoint deadline) const { return group_.wait(deadline); }

  bool someFailed() const {
    bool failed = false;
    queue_.sync([this, &failed] { failed = someFailed_; });
    return failed;
  }

 private:
  static void storeAndSend(const std::shared_ptr<StatusRun>& run,
                           const std::shared_ptr<DeliveryReceiptManaging>& manager) {
    const bool stored = manager->storeReceipt(run->data_);
    if (!stored) {
      Logger::service().error(LogCategory::deliveryReceipt, "Failed to store receipt for manager: ", *manager,
                              " with result: ", stored);
    }
    manager->sendReceipts([run, name = manager->description()](bool succeeded) {
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
  const platform::DispatchGroup group_;
  const platform::DispatchQueue queue_{"com.vtqx.status.queue",
                                       platform::DispatchQueue::Attribute::concurrent};
  bool someFailed_ = false;  // written in a barrier of queue_
};

std::string flagText(const std::optional<AppGroupSDK::DeliveryReceiptConfig>& config) {
  return config ? std::to_string(static_cast<std::int64_t>(config->featureFlag())) : "nil";
}

}  // namespace

DeliveryReceiptProcessor::DeliveryReceiptProcessor(
    std::unique_ptr<const AppGroupSDK::ContextModuleChecking> contextModuleChecker,
    AppGroupSDK::AppIdProvider appIdProvider, std::unique_ptr<const DeliveryReceiptDataParsing> dataParser)
    : appIdProvider_(std::move(appIdProvider)),
      contextModuleChecker_(std::move(contextModuleChecker)),
      dataParser_(std::move(dataParser)) {}

void DeliveryReceiptProcessor::process(
    const std::shared_ptr<const platform::UNNotificationRequest>& request,
    const std::shared_ptr<platform::UNMutableNotificationContent>& /*content*/,
    ProcessingCompletion completion) {
  const platform::Dictionary userInfo =
      request->content != nullptr ? request->content->userInfo() : platform::Dictionary();
  if (isVtqxPush(userInfo)) {
    run(userInfo);
  } else {
    logBackingOut(description());
  }
  completion(userInfoChanges_);
}

bool DeliveryReceiptProcessor::isVtqxPush(const platform::Dictionary& userInfo) const {
  if (VTQXUtility::isVTQXPush(userInfo)) return true;
  Logger::service().debug(LogCategory::deliveryReceipt,
                          "Not sending delivery receipt as it is a non VTQX push");
  return false;
}

bool DeliveryReceiptProcessor::isFeatureEnabled(const DeliveryReceiptConfigProviding& configuration) const {
  const auto config = configuration.deliveryReceiptConfig();
  Logger::service().debug(LogCategory::deliveryReceipt,
                          "Delivery Receipt feature flag is: ", flagText(config),
                          " for configuration: ", configuration);
  return config && config->featureFlag() == FeatureFlagStatus::enabled;
}

void DeliveryReceiptProcessor::run(const platform::Dictionary& userInfo) {
  const Logger& logger = Logger::service();
  const auto data = dataParser_->parse(userInfo);
  if (!data) {
    logger.error(LogCategory::deliveryReceipt, "Missing required values to generate delivery receipt event");
    return;
  }
  addManagers(userInfo);
  if (managers_.empty()) {
    logger.debug(LogCategory::deliveryReceipt, "No delivery receipt managers available");
    return;
  }
  storeAndSend(*data);
}

void DeliveryReceiptProcessor::addManagers(const platform::Dictionary& userInfo) {
  const auto context = AppGroupSDK::PNContextUtils::parseContextInfoFromUserInfo(userInfo);
  for (const auto module : kModules) {
    if (contextModuleChecker_->shouldProceed(module, context)) addManager(module);
  }
}

void DeliveryReceiptProcessor::addManager(ExtensionModuleName module) {
  auto appId = appIdProvider_.appIdForModule(module);
  if (!isFeatureEnabled(DeliveryReceiptConfigStore(module, appId))) return;
  if (!appId) {
    Logger::service().error(
        LogCategory::deliveryReceipt,
        "Unable to initialize DeliveryReceiptManagerProvider: No app ID found for module ",
        stringValue(module));
    return;
  }
  managers_.push_back(DeliveryReceiptManagerProvider(module, *std::move(appId)).makeManager());
}

void DeliveryReceiptProcessor::storeAndSend(const DeliveryReceiptData& data) const {
  const auto run = std::make_shared<StatusRun>(data);
  for (const auto& manager : managers_) StatusRun::start(run, manager);
  if (!run->wait(platform::Clock::current().now() + timeoutIntervalForProcessing_)) {
    Logger::service().error(LogCategory::deliveryReceipt, "Delivery receipt processing timed out");
  } else if (run->someFailed()) {
    Logger::service().warn(LogCategory::deliveryReceipt, "Some delivery receipts failed");
  }
}

}  // namespace QXExtensionSDK
