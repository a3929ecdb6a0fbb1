#pragma once

// The shared container, as the host application sees it: the names of its runtime for the records and stores.

#include "AppGroupSDK/ExtensionModuleName.h"
#include "AppGroupSDK/context/AppIdProvider.h"
#include "AppGroupSDK/context/PNContextInfo.h"
#include "AppGroupSDK/context/PNContextUtils.h"
#include "AppGroupSDK/records/AppDeviceInfoStore.h"
#include "AppGroupSDK/records/CarouselClickModelStore.h"
#include "AppGroupSDK/records/CarouselRichFeatureMetaUtils.h"
#include "AppGroupSDK/records/DeliveryReceiptsModelStore.h"
#include "AppGroupSDK/records/FeatureConfigDetailStore.h"
#include "AppGroupSDK/records/ModuleAppMappingStore.h"

namespace AppGroupSDK {

using VTQXAppDeviceInfo = AppDeviceInfo;
using VTQXDeliveryReceiptsModel = DeliveryReceiptsModel;
using VTQXDeliveryReceiptPNModel = DeliveryReceiptPNModel;
using VTQXFeatureConfigDetail = FeatureConfigDetail;
using VTQXDeliveryReceiptConfig = DeliveryReceiptConfig;
using VTQXModuleAppMapping = ModuleAppMapping;
using VTQXModuleAppMappings = ModuleAppMappings;
using VTQXCarouselClickModel = CarouselClickModel;

using VTQXAppDeviceInfoFetchResult = AppDeviceInfoFetchResult;
using VTQXDeliveryReceiptsModelFetchResult = DeliveryReceiptsModelFetchResult;
using VTQXFeatureConfigDetailFetchResult = FeatureConfigDetailFetchResult;
using VTQXModuleAppMappingFetchResult = ModuleAppMappingFetchResult;
using VTQXCarouselClickModelFetchResult = CarouselClickModelFetchResult;

using VTQXAppDeviceInfoStore = AppDeviceInfoStore;
using VTQXDeliveryReceiptsModelStore = DeliveryReceiptsModelStore;
using VTQXFeatureConfigDetailStore = FeatureConfigDetailStore;
using VTQXCarouselClickModelStore = CarouselClickModelStore;
using VTQXModuleAppMappingStore = ModuleAppMappingStore;

using VTQXAppIdProvider = AppIdProvider;

}  // namespace AppGroupSDK
