#include "QXExtensionSDK/payload/PayloadKeys.h"
#include "tools/qx/AuthoringCommands.h"
#include "tools/qx/CompressedRichFeatures.h"
#include "tools/qx/EachPush.h"
#include "tools/qx/SimulatedLog.h"

namespace qx {

namespace {

using QXExtensionSDK::kCompressedRichFeaturesKey;
using QXExtensionSDK::kRichFeaturesKey;
using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

Result<Dictionary> unpacked(const Dictionary& userInfo) {
  const QXPlatform::Value* field = userInfo.find(kCompressedRichFeaturesKey);
  if (field == nullptr) return Error{"no $_rf to unpack"};
  const auto richFeatures = inflateRichFeatures(*field);
  if (!richFeatures) return Error{"$_rf: " + richFeatures.error().message};
  return userInfo.removing(kCompressedRichFeaturesKey).setting(kRichFeaturesKey, *richFeatures);
}

}  // namespace

int runUnpack(const SimulatorOptions& simulator, const PushInput& input) {
  const SimulatedLog log(simulator);
  return printEachChanged(simulator, "unpack", input, unpacked);
}

}  // namespace qx
