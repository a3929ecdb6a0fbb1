#include "tools/qx/check/DecodingCheck.h"

#include <string>
#include <string_view>
#include <vector>

#include "QXExtensionSDK/payload/CarouselModel.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "tools/qx/check/Hints.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

using QXPlatform::Value;

std::vector<QXPlatform::DecodingError> errorsIn(const Value& richFeatures) {
  return QXPlatform::decodingErrors<QXExtensionSDK::CarouselModel>(richFeatures);
}

// Once it were a text, it might have to be one of a few.
std::string hintForNoText(const Value& richFeatures, const std::string& path) {
  const Value& found = valueAt(richFeatures, path);
  std::string hint = hintForText(found);
  if (hint.empty()) return hint;
  for (const auto& error : errorsIn(withValueAt(richFeatures, path, found.description()))) {
    if (error.path.text() == path) return hintForChoice(error.message);
  }
  return hint;
}

std::string hintAt(const QXPlatform::DecodingError& error, const Value& richFeatures) {
  const std::string& path = error.path.text();
  return error.message.starts_with("expected text") ? hintForNoText(richFeatures, path)
                                                    : hintFor(error, valueAt(richFeatures, path));
}

}  // namespace

void checkDecoding(const QXPlatform::Value& richFeatures, Findings& findings) {
  for (const auto& error : errorsIn(richFeatures)) {
    findings.error(std::string(kRichFeaturesPlace) + error.path.text(), error.message,
                   hintAt(error, richFeatures));
  }
}

}  // namespace qx
