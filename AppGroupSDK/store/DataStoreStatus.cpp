#include "AppGroupSDK/store/DataStoreStatus.h"

namespace AppGroupSDK {

std::string_view description(DataStoreStatus status) {
  switch (status) {
    case DataStoreStatus::success:
      return "success";
    case DataStoreStatus::containerUnavailable:
      return "containerUnavailable";
    case DataStoreStatus::containerNotFileURL:
      return "containerNotFileURL";
    case DataStoreStatus::encodingFailed:
      return "encodingFailed";
    case DataStoreStatus::writeFailed:
      return "writeFailed";
    case DataStoreStatus::noData:
      return "noData";
    case DataStoreStatus::decodingFailed:
      return "decodingFailed";
    case DataStoreStatus::moduleStoreUnavailable:
      return "moduleStoreUnavailable";
  }
  return "";
}

}  // namespace AppGroupSDK
