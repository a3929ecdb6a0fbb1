#include "tools/qx/check/DecodingCheck.h"

#include <string_view>

#include "QXExtensionSDK/payload/CarouselModel.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "tools/qx/check/Hints.h"
#include "tools/qx/check/Places.h"

namespace qx {

void checkDecoding(const QXPlatform::Value& richFeatures, Findings& findings) {
  for (const auto& error : QXPlatform::decodingErrors<QXExtensionSDK::CarouselModel>(richFeatures)) {
    const std::string& path = error.path.text();
    findings.error(std::string(kRichFeaturesPlace) + path, error.message,
                   hintFor(error, valueAt(richFeatures, path)));
  }
}

}  // namespace qx
