#include "QXExtensionSDK/receipts/ReceiptPayload.h"

#include <array>
#include <utility>

#include "QXPlatform/foundation/Date.h"

namespace QXExtensionSDK {

namespace {

constexpr std::size_t kTypicalItemBytes = 1024;

}  // namespace

std::optional<std::string_view> unlessEmpty(std::string_view text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

std::string receiptDate(double secondsSince1970) {
  return QXPlatform::formatUTCMilliseconds({secondsSince1970}).value_or("");
}

ReceiptItems::ReceiptItems(std::size_t expectedCount) : arena_((expectedCount + 1) * kTypicalItemBytes) {
  items_.reserve(expectedCount);
}

void ReceiptItems::add(int eventType, std::initializer_list<EventField> event) {
  add(QXPlatform::ValueArena::integer(eventType), event);
}

void ReceiptItems::add(std::string_view eventType, std::initializer_list<EventField> event) {
  add(text(eventType), event);
}

void ReceiptItems::add(const RawValue& eventType, std::initializer_list<EventField> event) {
  fields_.clear();
  for (const EventField& field : event) {
    if (field.text) fields_.push_back({field.key, text(*field.text)});
  }
  std::array item{RawEntry{"eventType", eventType}, RawEntry{"event", arena_.dictionary(fields_)}};
  items_.push_back(arena_.dictionary(item));
}

QXPlatform::Value ReceiptItems::nodes() && {
  std::array node{RawEntry{"version", QXPlatform::ValueArena::integer(1)}, RawEntry{"name", text("event")},
                  RawEntry{"items", arena_.array(items_)}};
  const std::array nodes{arena_.dictionary(node)};
  const RawValue list = arena_.array(nodes);
  return std::move(arena_).finish(list);
}

}  // namespace QXExtensionSDK
