#include "tools/qx/check/EnvelopeChecks.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "AppGroupSDK/context/ContextModuleChecker.h"
#include "AppGroupSDK/context/PNContextUtils.h"
#include "AppGroupSDK/records/CarouselRichFeatureMetaUtils.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptDataParser.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "tools/qx/check/Hints.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

using AppGroupSDK::ExtensionModuleName;
using QXPlatform::Dictionary;
using QXPlatform::Value;

bool isText(const Value* value) {
  return value != nullptr && value->string();
}

// "missing", or what is wrong with it.
std::string problem(const Value* value) {
  return value == nullptr ? "missing" : "not text";
}

// "_rf 3900, aps 120".
std::string listSizes(const Dictionary& userInfo) {
  std::string text;
  for (const auto& [key, size] : sizesByKey(userInfo)) {
    text.append(text.empty() ? "" : ", ").append(key).append(" ").append(std::to_string(size));
  }
  return text;
}

bool actsOn(const AppGroupSDK::PNContextInfo& context) {
  const AppGroupSDK::ContextModuleChecker checker(QXExtensionSDK::Logger::service());
  const auto modules = rawValues(QXPlatform::RawValuesOf<ExtensionModuleName>());
  return std::ranges::any_of(modules,
                             [&](const auto module) { return checker.shouldProceed(module, context); });
}

}  // namespace

void checkSize(const PushDocument& push, PushLimit limit, Findings& findings) {
  const Dictionary counted = limit == PushLimit::webPush ? push.sealed() : push.userInfo();
  const std::size_t size = pushSize(counted);
  if (size <= mostPushBytes(limit)) return;
  findings.error("", std::to_string(size) + " bytes without white space, over the " +
                         std::to_string(mostPushBytes(limit)) + " of " +
                         std::string(QXPlatform::rawValue(limit)) + ": " + listSizes(counted));
}

void checkAps(const Dictionary& userInfo, bool hasCarousel, Findings& findings) {
  const Value* aps = userInfo.find("aps");
  if (aps == nullptr) return;
  const auto isMutable = QXPlatform::decodeValue<std::int64_t>((*aps)["mutable-content"]);
  if (!isMutable || *isMutable != 1) {
    findings.error("/aps/mutable-content", "not 1: the service extension is never run",
                   R"(write "mutable-content": 1)");
  }
  if (hasCarousel && (*aps)["category"].string().value_or("").empty()) {
    findings.error("/aps/category", "missing: no content extension is chosen, so no carousel is shown",
                   R"(write the content extension's category, such as "category": "carousel")");
  }
}

void checkAlert(const Dictionary& userInfo, Findings& findings) {
  const Value* aps = userInfo.find("aps");
  const auto members = aps == nullptr ? std::nullopt : aps->dictionary();
  const Value* alert = members ? members->find("alert") : nullptr;
  if (alert == nullptr || alert->string()) return;
  const auto texts = alert->dictionary();
  if (!texts) {
    return findings.warn("/aps/alert", "ignored: neither text nor an object",
                         R"(write "alert": {"title": "…", "body": "…"})");
  }
  for (const std::string_view key : {"title", "subtitle", "body"}) {
    const Value* text = texts->find(key);
    if (text != nullptr && !text->string())
      findings.warn(memberPlace("/aps/alert", key), "ignored: not text", hintForText(*text));
  }
}

void checkBadgeAndSound(const Dictionary& userInfo, Findings& findings) {
  const Value* aps = userInfo.find("aps");
  const auto members = aps == nullptr ? std::nullopt : aps->dictionary();
  if (!members) return;
  const Value* badge = members->find("badge");
  if (badge != nullptr && !QXPlatform::decodeValue<std::int64_t>(*badge)) {
    findings.warn("/aps/badge", "ignored: not an integer", hintForInteger(*badge));
  }
  const Value* sound = members->find("sound");
  if (sound != nullptr && !sound->string() && !(*sound)["name"].string()) {
    findings.warn("/aps/sound", "ignored: neither text nor an object with a name",
                  R"(write "sound": "default")");
  }
}

void checkSender(const Dictionary& userInfo, Findings& findings) {
  if (QXExtensionSDK::VTQXUtility::isVTQXPush(userInfo)) return;
  const Value* sender = userInfo.find("_sid");
  findings.error("/_sid",
                 (isText(sender) ? "not VTQX" : problem(sender)) +
                     ": the framework leaves the push as it is, without carousel and receipt",
                 R"(write "_sid": "VTQX")");
}

void checkReceipt(const Dictionary& userInfo, Findings& findings) {
  const auto receipt = QXExtensionSDK::DeliveryReceiptDataParser().parse(userInfo);
  for (const std::string_view key : {"_m", "_mt"}) {
    const Value* value = userInfo.find(key);
    if (!receipt && !isText(value)) findings.warn(memberPlace("", key), problem(value) + ": no receipt");
  }
  if (!receipt) return;
  if (userInfo.contains("_r") && !receipt->requestId) findings.warn("/_r", "ignored: not text");
  if (userInfo.contains("_pb") && !receipt->propertyBag) findings.warn("/_pb", "ignored: not an object");
}

void checkContext(const Dictionary& userInfo, Findings& findings) {
  const Value* field = userInfo.find("_co");
  if (field == nullptr) return;
  const auto context = AppGroupSDK::PNContextUtils::parseContextInfoFromUserInfo(userInfo);
  if (context.isInavlidOrAbsentContext()) {
    findings.warn("/_co", std::string(isText(field) ? "says nothing a device can read" : "not text") +
                              ": the push is for the engagement module");
  } else if (!actsOn(context)) {
    findings.warn("/_co", "names no module: neither receipt nor click is recorded");
  }
}

void checkClick(const Dictionary& userInfo, Findings& findings) {
  if (AppGroupSDK::CarouselRichFeatureMetaUtils::getUniqueNotificationIdFrom(userInfo)) return;
  findings.warn("/_r", "neither _m nor _r names the notification: a tap on a panel does nothing");
}

}  // namespace qx
