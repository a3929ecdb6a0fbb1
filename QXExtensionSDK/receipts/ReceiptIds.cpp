#include "QXExtensionSDK/receipts/ReceiptIds.h"

#include <algorithm>
#include <bit>
#include <functional>

namespace QXExtensionSDK {

namespace {

std::uint32_t hashOf(std::string_view id) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>()(id));
}

}  // namespace

ReceiptIds::ReceiptIds(std::size_t expectedCount) : slots_(std::bit_ceil(2 * expectedCount + 2)) {
  ends_.reserve(slots_.size() / 2);
}

std::size_t ReceiptIds::add(std::string_view id) {
  if (2 * count() >= slots_.size()) addSlots();
  const std::uint32_t hash = hashOf(id);
  Slot& slot = slots_[slotOf(id, hash)];
  if (slot.numberPlusOne == 0) {
    texts_.append(id);
    ends_.push_back(texts_.size());
    slot = {static_cast<std::uint32_t>(count()), hash};
  }
  return slot.numberPlusOne - 1;
}

std::optional<std::size_t> ReceiptIds::find(std::string_view id) const {
  if (slots_.empty()) return std::nullopt;
  const Slot& slot = slots_[slotOf(id, hashOf(id))];
  return slot.numberPlusOne == 0 ? std::nullopt : std::optional<std::size_t>(slot.numberPlusOne - 1);
}

std::string_view ReceiptIds::operator[](std::size_t number) const {
  const std::size_t start = number == 0 ? 0 : ends_[number - 1];
  return std::string_view(texts_).substr(start, ends_[number] - start);
}

std::size_t ReceiptIds::slotOf(std::string_view id, std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = hash & mask;
  while (slots_[at].numberPlusOne != 0 &&
         (slots_[at].hash != hash || (*this)[slots_[at].numberPlusOne - 1] != id)) {
    at = (at + 1) & mask;
  }
  return at;
}

void ReceiptIds::fillSlots() {
  std::ranges::fill(slots_, Slot());
  for (std::size_t number = 0; number < count(); ++number) {
    const std::uint32_t hash = hashOf((*this)[number]);
    slots_[slotOf((*this)[number], hash)] = {static_cast<std::uint32_t>(number + 1), hash};
  }
}

// A power of two: what is used of a hash is its last bits. Takes all memory before it changes anything.
void ReceiptIds::addSlots() {
  constexpr std::size_t kFewest = 16;
  std::vector<Slot> before(std::max(kFewest, 2 * slots_.size()));
  ends_.reserve(before.size() / 2);
  before.swap(slots_);
  for (const Slot& slot : before) {
    if (slot.numberPlusOne != 0) slots_[slotOf((*this)[slot.numberPlusOne - 1], slot.hash)] = slot;
  }
}

}  // namespace QXExtensionSDK
