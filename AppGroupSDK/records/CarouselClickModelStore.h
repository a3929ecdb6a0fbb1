#pragma once

#include "AppGroupSDK/records/CarouselClickModel.h"
#include "AppGroupSDK/records/ModelStore.h"

namespace AppGroupSDK {

using CarouselClickModelFetchResult = DataStoreResult<CarouselClickModel>;
using CarouselClickModelStore = ModelStore<CarouselClickModel>;

}  // namespace AppGroupSDK
