#include <iostream>

#include "QXExtensionSDK/payload/PayloadKeys.h"
#include "tools/qx/AuthoringCommands.h"
#include "tools/qx/CompressedRichFeatures.h"
#include "tools/qx/EachPush.h"
#include "tools/qx/PushSize.h"

namespace qx {

namespace {

using QXExtensionSDK::kCompressedRichFeaturesKey;
using QXExtensionSDK::kRichFeaturesKey;
using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

Result<Dictionary> packed(const Dictionary& userInfo) {
  const QXPlatform::Value* richFeatures = userInfo.find(kRichFeaturesKey);
  if (richFeatures == nullptr) return Error{"no _rf to pack"};
  if (!richFeatures->isDictionary()) return Error{"_rf is not an object"};
  if (userInfo.contains(kCompressedRichFeaturesKey)) return Error{"$_rf is there already, beside _rf"};
  const auto field = compressRichFeatures(*richFeatures->dictionary());
  if (!field) return Error{"_rf: " + field.error().message};
  return userInfo.removing(kRichFeaturesKey).setting(kCompressedRichFeaturesKey, *field);
}

void sayByHowMuch(const PushPlace& place, const Dictionary& plain, const Dictionary& compressed) {
  const std::size_t before = pushSize(plain);
  const std::size_t after = pushSize(compressed);
  std::cerr << "qx pack: " << place.name << ": " << before << " bytes before, " << after << " after";
  constexpr std::size_t kMost = mostPushBytes(PushLimit::apns);
  if (after > kMost) std::cerr << "; still over the " << kMost << " that a push may have";
  if (after >= before) std::cerr << "; better left as it was";
  std::cerr << '\n';
}

}  // namespace

int runPack(const SimulatorOptions& simulator, const PushInput& input) {
  return printEachChanged(simulator, "pack", input, packed, sayByHowMuch);
}

}  // namespace qx
