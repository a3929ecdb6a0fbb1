#pragma once

#include "AppGroupSDK/records/FeatureConfigDetail.h"
#include "AppGroupSDK/records/ModelStore.h"

namespace AppGroupSDK {

using FeatureConfigDetailFetchResult = DataStoreResult<FeatureConfigDetail>;
using FeatureConfigDetailStore = ModelStore<FeatureConfigDetail>;

}  // namespace AppGroupSDK
