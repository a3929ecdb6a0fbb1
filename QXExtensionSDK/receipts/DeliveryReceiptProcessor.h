#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "AppGroupSDK/context/AppIdProvider.h"
#include "AppGroupSDK/context/ContextModuleChecker.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptConfigStore.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptDataParser.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptManaging.h"
#include "QXExtensionSDK/runtime/AsyncProcessing.h"

namespace QXExtensionSDK {

// What a processor of receipts decides on. Any thread.
class DeliveryReceiptProcessing {
 public:
  virtual ~DeliveryReceiptProcessing() = default;
  // Whether this messaging system sent the push; logs when not.
  virtual bool isVtqxPush(const platform::Dictionary& userInfo) const = 0;
  virtual bool isFeatureEnabled(const DeliveryReceiptConfigProviding& configuration) const = 0;
};

// Stores one receipt for each messaging module that a push is meant for and sends the module's pending ones,
// the modules side by side. Changes nothing in the notification. One object serves one push.
class DeliveryReceiptProcessor final : public AsyncProcessing, public DeliveryReceiptProcessing {
 public:
  DeliveryReceiptProcessor(std::unique_ptr<const AppGroupSDK::ContextModuleChecking> contextModuleChecker,
                           AppGroupSDK::AppIdProvider appIdProvider,
                           std::unique_ptr<const DeliveryReceiptDataParsing> dataParser);

  // Blocks until every module is through, 22 seconds at most, and completes in any case. What is still on its
  // way by then goes on without this object.
  void process(const std::shared_ptr<const platform::UNNotificationRequest>& request,
               const std::shared_ptr<platform::UNMutableNotificationContent>& content,
               ProcessingCompletion completion) override;
  std::string_view description() const override { return "DeliveryReceiptProcessor"; }

  bool isVtqxPush(const platform::Dictionary& userInfo) const override;
  bool isFeatureEnabled(const DeliveryReceiptConfigProviding& configuration) const override;

 private:
  void run(const platform::Dictionary& userInfo);
  void addManagers(const platform::Dictionary& userInfo);
  void addManager(AppGroupSDK::ExtensionModuleName module);
  void storeAndSend(const DeliveryReceiptData& data) const;

  const std::chrono::seconds timeoutIntervalForProcessing_{22};
  AppGroupSDK::AppIdProvider appIdProvider_;
  const std::unique_ptr<const AppGroupSDK::ContextModuleChecking> contextModuleChecker_;
  const std::unique_ptr<const DeliveryReceiptDataParsing> dataParser_;
  const UserInfoChanges userInfoChanges_;
  std::vector<std::shared_ptr<DeliveryReceiptManaging>> managers_;
};

}  // namespace QXExtensionSDK
