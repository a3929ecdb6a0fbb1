#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

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

  // Text joined from two pieces, stored in the arena.
  std::string_view store(std::string_view head, std::string_view tail = {});

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
  std::size_t size() const;
  // Whether that many bytes of text can be stored without taking more.
  bool fits(std::size_t size) const;

  // The finished tree. The arena must not be used afterwards.
  Value finish(const RawValue& root) &&;

 private:
  struct Storage;

  static constexpr std::uint8_t tag(Value::Kind kind) { return static_cast<std::uint8_t>(kind); }

  RawValue bytes(std::string_view stored, Value::Kind kind);
  void* allocate(std::size_t size, std::size_t alignment);

  Storage* storage_;
};

}  // namespace QXPlatform
