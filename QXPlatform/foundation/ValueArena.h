#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <string_view>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/Value.h"

namespace QXPlatform {

// Builds one tree whose nodes all live in a few large allocations: for parsers, where allocating node by
// node would cost more than parsing. The tree is freed as a whole when its last Value goes.
//
// The RawValues handed out are bare bits, valid only for this arena. Not for use by several threads at once.
class ValueArena {
 public:
  using RawValue = detail::RawValue;
  struct RawEntry {
    std::string_view key;
    RawValue value;
  };

  // `expectedBytes`: a guess at the tree's size; a wrong one costs further allocations, nothing else.
  explicit ValueArena(std::size_t expectedBytes);
  ~ValueArena();
  ValueArena(const ValueArena&) = delete;
  ValueArena& operator=(const ValueArena&) = delete;

  // Text, stored in the arena; also joined from two pieces.
  std::string_view store(std::string_view text) {
    auto* const place = static_cast<char*>(allocate(text.size(), 1));
    copy(text, place);
    return {place, text.size()};
  }
  std::string_view store(std::string_view head, std::string_view tail);

  static RawValue null() { return {nullptr, {.integer = 0}, 0, tag(Value::Kind::null)}; }
  static RawValue boolean(bool value) { return {nullptr, {.boolean = value}, 0, tag(Value::Kind::boolean)}; }
  static RawValue integer(std::int64_t value) {
    return {nullptr, {.integer = value}, 0, tag(Value::Kind::integer)};
  }
  static RawValue number(double value) { return {nullptr, {.number = value}, 0, tag(Value::Kind::number)}; }
  static RawValue date(Date value) {
    return {nullptr, {.number = value.secondsSince1970}, 0, tag(Value::Kind::date)};
  }
  // `stored`: from store() of this arena.
  RawValue string(std::string_view stored) { return bytes(stored, Value::Kind::string); }
  RawValue data(std::string_view stored) { return bytes(stored, Value::Kind::data); }
  RawValue array(std::span<const RawValue> elements);
  // Sorts `entries` in place; of equal keys the last counts. Keys: from store() of this arena, or literals.
  RawValue dictionary(std::span<RawEntry> entries);

  // The memory taken so far.
  std::size_t size() const { return storage_->size; }
  // Whether that many bytes of text can be stored without taking more.
  bool fits(std::size_t size) const {
    return static_cast<std::size_t>(storage_->end - storage_->next) >= size;
  }

  // The finished tree. The arena must not be used afterwards.
  Value finish(const RawValue& root) &&;

 private:
  struct Chunk {
    Chunk* next;
  };
  // The first chunk holds the block's own head; further chunks are linked from it. The nodes inside refer to
  // the storage without counting, so nothing has to be torn down node by node.
  struct Storage : detail::Block {
    Storage() : Block(destroyStorage) {}
    static void destroyStorage(Block* block) noexcept;

    char* next = nullptr;
    char* end = nullptr;
    Chunk* further = nullptr;
    std::size_t size = 0;
  };

  static constexpr std::uint8_t tag(Value::Kind kind) { return static_cast<std::uint8_t>(kind); }

  RawValue bytes(std::string_view stored, Value::Kind kind) {
    return {storage_, {.bytes = stored.data()}, checkedSize(stored.size()), tag(kind)};
  }
  static std::uint32_t checkedSize(std::size_t size) {
    if (size > std::numeric_limits<std::uint32_t>::max()) fatalError("A property-list node over 4 GiB");
    return static_cast<std::uint32_t>(size);
  }

  // Most texts are short, and a call takes longer than to copy those: both ends, which may have a part in
  // common.
  static void copy(std::string_view text, char* place) {
    if (text.size() > 2 * sizeof(std::uint64_t)) {
      std::memcpy(place, text.data(), text.size());
    } else if (text.size() >= sizeof(std::uint64_t)) {
      copyEnds<std::uint64_t>(text, place);
    } else if (text.size() >= sizeof(std::uint32_t)) {
      copyEnds<std::uint32_t>(text, place);
    } else if (text.size() >= sizeof(std::uint16_t)) {
      copyEnds<std::uint16_t>(text, place);
    } else if (!text.empty()) {
      *place = text.front();
    }
  }
  template <typename End>
  static void copyEnds(std::string_view text, char* place) {
    const std::size_t rest = text.size() - sizeof(End);
    std::memcpy(place, text.data(), sizeof(End));
    std::memcpy(place + rest, text.data() + rest, sizeof(End));
  }

  void* allocate(std::size_t size, std::size_t alignment) {
    // A mask, since every alignment is a power of two and dividing would cost more than all the rest.
    const std::size_t padding = -reinterpret_cast<std::uintptr_t>(storage_->next) & (alignment - 1);
    if (!fits(size + padding)) return allocateInNewChunk(size, alignment);
    char* const place = storage_->next + padding;
    storage_->next = place + size;
    return place;
  }
  void* allocateInNewChunk(std::size_t size, std::size_t alignment);

  Storage* storage_;
};

}  // namespace QXPlatform
