#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/foundation/ValueArena.h"

namespace QXExtensionSDK {

// What the bodies of both modules have in common.

// One entry of an event; without a text it is left out.
struct EventField {
  std::string_view key;  // a literal
  std::optional<std::string_view> text;
};

// Nothing for an empty text.
std::optional<std::string_view> unlessEmpty(std::string_view text);

// 2024-05-01T09:03:07.250Z; empty for an instant that has no such form.
std::string receiptDate(double secondsSince1970);

// The items of a payload, all in a few large allocations: a full batch has some 1,500 nodes.
class ReceiptItems {
 public:
  explicit ReceiptItems(std::size_t expectedCount);

  // Appends {"eventType", "event"}.
  void add(int eventType, std::initializer_list<EventField> event);
  void add(std::string_view eventType, std::initializer_list<EventField> event);

  // The list that wraps the items. This object must not be used afterwards.
  QXPlatform::Value nodes() &&;

 private:
  using RawValue = QXPlatform::ValueArena::RawValue;
  using RawEntry = QXPlatform::ValueArena::RawEntry;

  RawValue text(std::string_view text) { return arena_.string(arena_.store(text)); }
  void add(const RawValue& eventType, std::initializer_list<EventField> event);

  QXPlatform::ValueArena arena_;
  std::vector<RawValue> items_;
  std::vector<RawEntry> fields_;  // of the event in the making
};

}  // namespace QXExtensionSDK
