#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>

#include "AppGroupSDK/context/AppIdProvider.h"
#include "AppGroupSDK/context/ContextModuleChecker.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptConfigStore.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptDataParser.h"
#include "QXExtensionSDK/runtime/processing/AsyncProcessing.h"
#include "QXPlatform/dispatch/Clock.h"

namespace QXExtensionSDK {

// What a processor of receipts decides on. Any thread.
class DeliveryReceiptProcessing {
 public:
  virtual ~DeliveryReceiptProcessing() = default;
  // Whether this messaging system sent the push; logs when not.
  virtual bool isVtqxPush(const QXPlatform::Dictionary& userInfo) const = 0;
  virtual bool isFeatureEnabled(const DeliveryReceiptConfigProviding& configuration) const = 0;
};

// Stores one receipt for each messaging module that a push is meant for and sends the module's pending ones,
// the modules side by side. Changes nothing in the notification. One object serves one push.
class DeliveryReceiptProcessor final : public AsyncProcessing, public DeliveryReceiptProcessing {
 public:
  DeliveryReceiptProcessor(std::unique_ptr<const AppGroupSDK::ContextModuleChecking> contextModuleChecker,
                           AppGroupSDK::AppIdProvider appIdProvider,
                           std::unique_ptr<const DeliveryReceiptDataParsing> dataParser);

  // Blocks until every module is through, 22 seconds at most from its call on, and completes in any case.
  // What is still on its way by then goes on without this object.
  void process(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
               const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
               ProcessingCompletion completion) override;
  std::string_view description() const override { return "DeliveryReceiptProcessor"; }

  bool isVtqxPush(const QXPlatform::Dictionary& userInfo) const override;
  bool isFeatureEnabled(const DeliveryReceiptConfigProviding& configuration) const override;

 private:
  void run(const QXPlatform::Dictionary& userInfo, QXPlatform::Clock::TimePoint deadline) const;

  const std::chrono::seconds timeoutIntervalForProcessing_{22};
  const std::shared_ptr<AppGroupSDK::AppIdProvider> appIdProvider_;
  const std::shared_ptr<const AppGroupSDK::ContextModuleChecking> contextModuleChecker_;
  const std::unique_ptr<const DeliveryReceiptDataParsing> dataParser_;
  const UserInfoChanges userInfoChanges_;
};

}  // namespace QXExtensionSDK
