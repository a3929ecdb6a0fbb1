#pragma once

#include <memory>
#include <utility>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "AppGroupSDK/context/AppIdProvider.h"
#include "AppGroupSDK/context/ContextModuleChecker.h"
#include "AppGroupSDK/context/PNContextInfo.h"
#include "AppGroupSDK/records/CarouselClickModelStore.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/dispatch/DispatchQueue.h"

namespace QXExtensionSDK {

// Keeps the last click on a carousel for the host application. One thread at a time.
class CarouselClickStoring {
 public:
  virtual ~CarouselClickStoring() = default;
  // Replaces the click before; false when it could not be written.
  virtual bool save(const AppGroupSDK::CarouselClickModel& click) const = 0;
};

// That of one module: in the module's own record.
class CarouselClickStorage final : public CarouselClickStoring {
 public:
  explicit CarouselClickStorage(AppGroupSDK::CarouselClickModelStore store) : store_(std::move(store)) {}

  bool save(const AppGroupSDK::CarouselClickModel& click) const override;

 private:
  AppGroupSDK::CarouselClickModelStore store_;
};

// Finds the storage of a module for a push.
class CarouselClickStorageCreating {
 public:
  virtual ~CarouselClickStorageCreating() = default;
  // Null when the push is not meant for the module or the module has no application id.
  virtual std::unique_ptr<CarouselClickStoring> createStorage(AppGroupSDK::ExtensionModuleName module,
                                                              const AppGroupSDK::PNContextInfo& context) = 0;
};

// Logs why there is no storage. One thread at a time.
class CarouselClickStorageFactory final : public CarouselClickStorageCreating {
 public:
  // `logger` must outlive the factory.
  explicit CarouselClickStorageFactory(const Logger& logger)
      : CarouselClickStorageFactory(logger, std::make_unique<AppGroupSDK::ContextModuleChecker>(logger),
                                    AppGroupSDK::AppIdProvider()) {}
  CarouselClickStorageFactory(const Logger& logger,
                              std::unique_ptr<const AppGroupSDK::ContextModuleChecking> checker,
                              AppGroupSDK::AppIdProvider appIdProvider)
      : logger_(logger), checker_(std::move(checker)), appIdProvider_(std::move(appIdProvider)) {}

  std::unique_ptr<CarouselClickStoring> createStorage(AppGroupSDK::ExtensionModuleName module,
                                                      const AppGroupSDK::PNContextInfo& context) override;

 private:
  const Logger& logger_;
  const std::unique_ptr<const AppGroupSDK::ContextModuleChecking> checker_;
  AppGroupSDK::AppIdProvider appIdProvider_;
};

// Where a tap's click is saved, away from the main thread. Whoever has to know that it is saved waits by
// sync().
const QXPlatform::DispatchQueue& clickSavingQueue();

}  // namespace QXExtensionSDK
