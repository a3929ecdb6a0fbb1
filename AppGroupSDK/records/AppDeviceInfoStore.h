#pragma once

#include "AppGroupSDK/records/AppDeviceInfo.h"
#include "AppGroupSDK/records/ModelStore.h"

namespace AppGroupSDK {

using AppDeviceInfoFetchResult = DataStoreResult<AppDeviceInfo>;
using AppDeviceInfoStore = ModelStore<AppDeviceInfo>;

}  // namespace AppGroupSDK
