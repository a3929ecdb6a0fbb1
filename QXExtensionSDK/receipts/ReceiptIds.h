#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace QXExtensionSDK {

// The ids of receipts, each once, numbered from 0 on in the order in which they came. A batch has 150, which
// one thread puts together and another one looks up: they lie side by side in three blocks, where a standard
// set would have two for each. An addition that finds no memory changes nothing.
class ReceiptIds {
 public:
  ReceiptIds() = default;
  explicit ReceiptIds(std::size_t expectedCount);
  // Not copied: a copy would lack the room that is taken ahead.
  ReceiptIds(ReceiptIds&&) = default;
  ReceiptIds& operator=(ReceiptIds&&) = default;

  // The number of an id; the next one when it is new.
  std::size_t add(std::string_view id);
  // Nothing when it is not there.
  std::optional<std::size_t> find(std::string_view id) const;
  bool contains(std::string_view id) const { return find(id).has_value(); }
  std::size_t count() const { return ends_.size(); }
  // REQUIRES: number < count().
  std::string_view operator[](std::size_t number) const;
  // The others close up, in their order. Takes no memory.
  template <typename IsDropped>
  void drop(const IsDropped& isDropped);

 private:
  // At least half of them are empty.
  struct Slot {
    std::uint32_t numberPlusOne = 0;  // of the id; 0 in an empty one
    std::uint32_t hash = 0;
  };

  // That of the id, or the empty one where it belongs. REQUIRES: there are slots.
  std::size_t slotOf(std::string_view id, std::uint32_t hash) const;
  void addSlots();
  void fillSlots();

  std::string texts_;              // one after the other
  std::vector<std::size_t> ends_;  // of each, in texts_
  std::vector<Slot> slots_;        // by hash; a power of two
};

template <typename IsDropped>
void ReceiptIds::drop(const IsDropped& isDropped) {
  std::size_t kept = 0;
  std::size_t keptEnd = 0;
  std::size_t start = 0;
  for (std::size_t number = 0; number < count(); ++number) {
    const std::size_t end = ends_[number];
    if (!isDropped(number)) {
      if (keptEnd != start) std::copy(texts_.data() + start, texts_.data() + end, texts_.data() + keptEnd);
      keptEnd += end - start;
      ends_[kept++] = keptEnd;
    }
    start = end;
  }
  if (kept == 0) {
    *this = {};
    return;
  }
  texts_.resize(keptEnd);
  ends_.resize(kept);
  fillSlots();
}

}  // namespace QXExtensionSDK
