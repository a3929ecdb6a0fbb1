#include "tools/qx/check/RecordChecks.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "QXExtensionSDK/payload/Color.h"
#include "tools/qx/check/Hints.h"
#include "tools/qx/check/Places.h"
#include "tools/qx/check/RecordWalk.h"

namespace qx {

namespace {

constexpr std::string_view kUnread = "ignored: no key that is read here";

std::vector<std::string_view> unreadKeys(const RecordInPlace& record) {
  std::vector<std::string_view> unread;
  for (const auto& [key, value] : record.object) {
    if (std::ranges::find(record.keys, key) == record.keys.end()) unread.push_back(key);
  }
  return unread;
}

void checkKeys(const RecordInPlace& record, Findings& findings) {
  for (const std::string_view key : unreadKeys(record)) {
    findings.warn(memberPlace(record.place, key), std::string(kUnread), hintForKey(key, record.keys));
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

void checkRequest(const QXPlatform::Dictionary& request, Findings& findings) {
  walkRequest(request, [&](const RecordInPlace& record) {
    for (const std::string_view key : unreadKeys(record)) {
      findings.warnOfFrame(memberPlace(record.place, key), kUnread, hintForKey(key, record.keys));
    }
  });
}

}  // namespace qx
