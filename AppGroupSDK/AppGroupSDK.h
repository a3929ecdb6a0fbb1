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

using VTQXAppDeviceInfo = AppGroupSDK::AppDeviceInfo;
using VTQXDeliveryReceiptsModel = AppGroupSDK::DeliveryReceiptsModel;
using VTQXDeliveryReceiptPNModel = AppGroupSDK::DeliveryReceiptPNModel;
using VTQXFeatureConfigDetail = AppGroupSDK::FeatureConfigDetail;
using VTQXDeliveryReceiptConfig = AppGroupSDK::DeliveryReceiptConfig;
using VTQXModuleAppMapping = AppGroupSDK::ModuleAppMapping;
using VTQXModuleAppMappings = AppGroupSDK::ModuleAppMappings;
using VTQXCarouselClickModel = AppGroupSDK::CarouselClickModel;

using VTQXAppDeviceInfoFetchResult = AppGroupSDK::AppDeviceInfoFetchResult;
using VTQXDeliveryReceiptsModelFetchResult = AppGroupSDK::DeliveryReceiptsModelFetchResult;
using VTQXFeatureConfigDetailFetchResult = AppGroupSDK::FeatureConfigDetailFetchResult;
using VTQXModuleAppMappingFetchResult = AppGroupSDK::ModuleAppMappingFetchResult;
using VTQXCarouselClickModelFetchResult = AppGroupSDK::CarouselClickModelFetchResult;

using VTQXAppDeviceInfoStore = AppGroupSDK::AppDeviceInfoStore;
using VTQXDeliveryReceiptsModelStore = AppGroupSDK::DeliveryReceiptsModelStore;
using VTQXFeatureConfigDetailStore = AppGroupSDK::FeatureConfigDetailStore;
using VTQXCarouselClickModelStore = AppGroupSDK::CarouselClickModelStore;
using VTQXModuleAppMappingStore = AppGroupSDK::ModuleAppMappingStore;

using VTQXAppIdProvider = AppGroupSDK::AppIdProvider;
