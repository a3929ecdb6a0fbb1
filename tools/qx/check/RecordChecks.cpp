#include "tools/qx/check/RecordChecks.h"

#include <algorithm>
#include <string_view>

#include "QXExtensionSDK/payload/Color.h"
#include "tools/qx/check/Hints.h"
#include "tools/qx/check/Places.h"
#include "tools/qx/check/RecordWalk.h"

namespace qx {

namespace {

void checkKeys(const RecordInPlace& record, Findings& findings) {
  for (const auto& [key, value] : record.object) {
    if (std::ranges::find(record.keys, key) != record.keys.end()) continue;
    findings.warn(memberPlace(record.place, key), "ignored: no key that is read here",
                  hintForKey(key, record.keys));
  }
}

void checkColors(const RecordInPlace& record, Findings& findings) {
  for (const std::string_view key : record.keys) {
    if (key != "bgc" && key != "fc") continue;
    const auto text = record.object[key].string();
    if (!text || QXExtensionSDK::parseColor(*text, QXExtensionSDK::Logger::content())) continue;
    findings.warn(memberPlace(record.place, key),
                  "no colour, replaced by the default: six hexadecimal digits, RRGGBB, are one",
                  hintForColor(*text));
  }
}

}  // namespace

void checkRecords(const QXPlatform::Value& richFeatures, Findings& findings) {
  walkRecords(richFeatures, kRichFeaturesPlace, [&](const RecordInPlace& record) {
    checkKeys(record, findings);
    checkColors(record, findings);
  });
}

}  // namespace qx
