#include "tools/qx/check/DecodingCheck.h"

#include "QXExtensionSDK/payload/CarouselModel.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "tools/qx/check/Places.h"

namespace qx {

void checkDecoding(const QXPlatform::Value& richFeatures, Findings& findings) {
  const auto errors =
      QXPlatform::decodingErrors<QXExtensionSDK::CarouselModel>(richFeatures, kRichFeaturesPlace);
  for (const auto& error : errors) findings.error(error.path.text(), error.message);
}

}  // namespace qx
