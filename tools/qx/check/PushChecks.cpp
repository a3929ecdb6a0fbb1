#include "tools/qx/check/PushChecks.h"

#include <optional>
#include <string_view>
#include <utility>

#include "QXExtensionSDK/payload/PayloadKeys.h"
#include "tools/qx/CompressedRichFeatures.h"
#include "tools/qx/check/DecodingCheck.h"
#include "tools/qx/check/EnvelopeChecks.h"
#include "tools/qx/check/ImageChecks.h"
#include "tools/qx/check/PanelChecks.h"
#include "tools/qx/check/Places.h"
#include "tools/qx/check/RecordChecks.h"

namespace qx {

namespace {

using QXExtensionSDK::kCompressedRichFeaturesKey;
using QXExtensionSDK::kRichFeaturesKey;
using QXPlatform::Dictionary;
using QXPlatform::Value;

// The service extension blanks the field when it has inflated it.
bool isLeftOver(const Value& field, const Dictionary& userInfo) {
  return field.string() == "" && userInfo.contains(kRichFeaturesKey);
}

// What stands under "_rf" when the content extension looks.
std::optional<Value> findRichFeatures(const Dictionary& userInfo, Findings& findings) {
  const Value* plain = userInfo.find(kRichFeaturesKey);
  const Value* compressed = userInfo.find(kCompressedRichFeaturesKey);
  if (compressed != nullptr && !isLeftOver(*compressed, userInfo)) {
    const auto inflated = inflateRichFeatures(*compressed);
    if (inflated) {
      if (plain != nullptr) findings.warn(kRichFeaturesPlace, "replaced by what $_rf inflates to");
      findings.setInflated();
      return *inflated;
    }
    // The device goes on with what it has.
    if (plain != nullptr) {
      findings.warn(kCompressedRichFeaturesPlace, "ignored: " + inflated.error().message);
    } else {
      findings.error(kCompressedRichFeaturesPlace, inflated.error().message);
    }
  }
  return plain != nullptr ? std::optional(*plain) : std::nullopt;
}

void checkRichFeatures(const Value& richFeatures, Findings& findings) {
  checkDecoding(richFeatures, findings);
  checkRecords(richFeatures, findings);
  checkTemplate(richFeatures, findings);
  checkPanels(richFeatures, findings);
  checkImages(richFeatures, findings);
  checkThumbnail(richFeatures, findings);
}

}  // namespace

std::vector<Finding> checkPush(const PushDocument& push, PushLimit limit) {
  const Dictionary& userInfo = push.userInfo();
  Findings findings(push.userInfoPath());
  const bool hasCarousel =
      userInfo.contains(kRichFeaturesKey) || userInfo.contains(kCompressedRichFeaturesKey);
  checkSize(push, limit, findings);
  checkAps(userInfo, hasCarousel, findings);
  checkAlert(userInfo, findings);
  checkBadgeAndSound(userInfo, findings);
  checkSender(userInfo, findings);
  checkReceipt(userInfo, findings);
  checkContext(userInfo, findings);
  if (const auto richFeatures = findRichFeatures(userInfo, findings)) {
    checkClick(userInfo, findings);
    checkRichFeatures(*richFeatures, findings);
  }
  if (push.isFullRequest()) checkRequest(push.json(), findings);
  return std::move(findings).sorted();
}

}  // namespace qx
