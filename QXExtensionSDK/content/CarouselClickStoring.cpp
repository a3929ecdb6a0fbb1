#include "QXExtensionSDK/content/CarouselClickStoring.h"

namespace QXExtensionSDK {

bool CarouselClickStorage::save(const AppGroupSDK::CarouselClickModel& click) const {
  return store_.saveModuleScopedModelData(click) == AppGroupSDK::DataStoreStatus::success;
}

std::unique_ptr<CarouselClickStoring> CarouselClickStorageFactory::createStorage(
    AppGroupSDK::ExtensionModuleName module, const AppGroupSDK::PNContextInfo& context) {
  if (!checker_->shouldProceed(module, context)) {
    logger_.error(LogCategory::contentGeneral,
                  "CarouselClickStorage creation failed: module: ", AppGroupSDK::stringValue(module),
                  " not found in context: ", context);
    return nullptr;
  }
  const auto appId = appIdProvider_.appIdForModule(module);
  if (!appId) {
    logger_.error(LogCategory::contentGeneral, "CarouselClickStorage creation failed: appId for module: ",
                  AppGroupSDK::stringValue(module), " not available");
    return nullptr;
  }
  return std::make_unique<CarouselClickStorage>(AppGroupSDK::CarouselClickModelStore(module, *appId));
}

const QXPlatform::DispatchQueue& clickSavingQueue() {
  using QXPlatform::DispatchQueue;
  static const DispatchQueue queue("com.vtqx.carousel.click", DispatchQueue::Attribute::serial);
  return queue;
}

}  // namespace QXExtensionSDK
