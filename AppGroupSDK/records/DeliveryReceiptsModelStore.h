#pragma once

#include "AppGroupSDK/records/DeliveryReceiptsModel.h"
#include "AppGroupSDK/records/ModelStore.h"

namespace AppGroupSDK {

using DeliveryReceiptsModelFetchResult = DataStoreResult<DeliveryReceiptsModel>;
using DeliveryReceiptsModelStoreProtocol = ModelStoreProtocol<DeliveryReceiptsModel>;
using DeliveryReceiptsModelStore = ModelStore<DeliveryReceiptsModel>;

}  // namespace AppGroupSDK
