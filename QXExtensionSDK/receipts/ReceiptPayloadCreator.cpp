#include "QXExtensionSDK/receipts/ReceiptPayloadCreator.h"

#include <array>
#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/Date.h"

namespace QXExtensionSDK {

namespace {

constexpr std::size_t kTypicalItemBytes = 1024;

}  // namespace

ReceiptItems::ReceiptItems(std::size_t expectedCount) : arena_((expectedCount + 1) * kTypicalItemBytes) {
  items_.reserve(expectedCount);
}

void ReceiptItems::add(int eventType, std::initializer_list<Field> event) {
  add(QXPlatform::ValueArena::integer(eventType), event);
}

void ReceiptItems::add(std::string_view eventType, std::initializer_list<Field> event) {
  add(text(eventType), event);
}

void ReceiptItems::add(const RawValue& eventType, std::initializer_list<Field> event) {
  fields_.clear();
  for (const Field& field : event) {
    if (!field.text) continue;
    // Made in place: a copy would wait for its parts.
    RawEntry& entry = fields_.emplace_back();
    entry.key = field.key;
    new (&entry.value) RawValue(text(*field.text));
  }
  std::array item{RawEntry{"event", arena_.dictionary(fields_)}, RawEntry{"eventType", eventType}};
  items_.push_back(arena_.dictionary(item));
}

QXPlatform::Value ReceiptItems::nodes() && {
  std::array node{RawEntry{"version", QXPlatform::ValueArena::integer(1)}, RawEntry{"name", text("event")},
                  RawEntry{"items", arena_.array(items_)}};
  const std::array nodes{arena_.dictionary(node)};
  const RawValue list = arena_.array(nodes);
  return std::move(arena_).finish(list);
}

ReceiptPayloadCreator::ReceiptPayloadCreator(std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider)
    : appDeviceInfoProvider_(std::move(appDeviceInfoProvider)) {}

std::optional<QXPlatform::Dictionary> ReceiptPayloadCreator::createPayload(const Receipts& receipts) const {
  if (receipts.empty()) {
    // The text names one module for both; that is how it has always read.
    Logger::service().debug(LogCategory::deliveryReceipt,
                            "No pending receipts to create MAM delivery receipt payload");
    return std::nullopt;
  }
  const auto& info = appDeviceInfoProvider_->appDeviceInfo();
  if (const auto missing = missingField(info)) {
    for (std::size_t skipped = 0; skipped < receipts.size(); ++skipped) {
      Logger::service().error(LogCategory::deliveryReceipt, eventName(), " creation failure: ", *missing,
                              " is missing");
    }
    return makeBodyWithoutEvents();
  }
  const auto receiptDateUtc = formatted(QXPlatform::Date::now().secondsSince1970);
  ReceiptItems items(receipts.size());
  for (const auto& receipt : receipts) addEvent(items, receipt, *info, receiptDateUtc);
  return makeBody(*info, std::move(items).nodes());
}

std::optional<std::string> ReceiptPayloadCreator::formatted(double secondsSince1970) {
  return QXPlatform::formatUTCMilliseconds({secondsSince1970});
}

}  // namespace QXExtensionSDK
