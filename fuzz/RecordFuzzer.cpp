#include <cstddef>
#include <cstdint>
#include <string_view>

#include "AppGroupSDK/AppGroupSDK.h"
#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/JSONCoding.h"

namespace {

template <typename... Models>
void checkEach(std::string_view bytes) {
  const auto check = [&]<typename Model>(const Model* /*kind*/) {
    const auto model = QXPlatform::decodeJSON<Model>(bytes);
    if (!model) return;
    const auto text = QXPlatform::encodeJSON(*model);
    if (!text) QXPlatform::fatalError("Refused to write what was read");
    const auto back = QXPlatform::decodeJSON<Model>(*text);
    if (!back || !(*back == *model)) QXPlatform::fatalError("Read back as something else");
  };
  (check(static_cast<const Models*>(nullptr)), ...);
}

}  // namespace

// Whatever a file of the container holds is no record, or one that is written as it was read.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace AppGroupSDK;
  checkEach<AppDeviceInfo, DeliveryReceiptsModel, FeatureConfigDetail, ModuleAppMappings, CarouselClickModel>(
      {reinterpret_cast<const char*>(data), size});
  return 0;
}
