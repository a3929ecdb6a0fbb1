#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/Date.h"
#include "QXPlatform/foundation/ValueStorage.h"

namespace QXPlatform {

class Dictionary;
class ValueArena;
struct DictionaryEntry;

// One node of a property list: null, boolean, 64-bit integer, double, text, date, bytes, array, or a
// dictionary with text keys.
//
// Values are immutable and shared: a copy costs one counter increment however large the tree is, and the
// copies may be read and destroyed on different threads at once. A single Value object is, like an int, not
// to be assigned on one thread while it is read on another.
//
// References, pointers, spans and views handed out below stay valid for as long as the Value they came from,
// or any copy of it or of a tree that holds it.
class Value {
 public:
  enum class Kind : std::uint8_t { null, boolean, integer, number, string, date, data, array, dictionary };

  Value() noexcept : raw_{nullptr, {.integer = 0}, 0, 0} {}
  Value(std::nullptr_t) noexcept : Value() {}
  // A template, so that no pointer turns into a boolean.
  template <typename Boolean>
  requires std::same_as<Boolean, bool> Value(Boolean boolean)
  noexcept : raw_{nullptr, {.boolean = boolean}, 0, tag(Kind::boolean)} {}
  // Any integer type whose every value fits 64 bits with a sign.
  template <std::integral Integer>
  requires(!std::same_as<Integer, bool> && (std::signed_integral<Integer> || sizeof(Integer) < 8))
      Value(Integer integer)
  noexcept : raw_{nullptr, {.integer = static_cast<std::int64_t>(integer)}, 0, tag(Kind::integer)} {}
  Value(double number) noexcept : raw_{nullptr, {.number = number}, 0, tag(Kind::number)} {}
  Value(std::string_view text);
  Value(const std::string& text) : Value(std::string_view(text)) {}
  Value(const char* text) : Value(std::string_view(text)) {}
  Value(Date date) noexcept : raw_{nullptr, {.number = date.secondsSince1970}, 0, tag(Kind::date)} {}
  Value(const Data& data);
  Value(const Dictionary& dictionary);
  Value(const std::vector<Value>& elements);

  Value(const Value& other) noexcept : raw_(other.raw_) {
    if (raw_.owner != nullptr) detail::retain(raw_.owner);
  }
  Value(Value&& other) noexcept : raw_(std::exchange(other.raw_, Value::nothing())) {}
  Value& operator=(const Value& other) noexcept {
    Value copy(other);
    std::swap(raw_, copy.raw_);
    return *this;
  }
  Value& operator=(Value&& other) noexcept {
    std::swap(raw_, other.raw_);
    return *this;
  }
  ~Value() {
    if (raw_.owner != nullptr) detail::release(raw_.owner);
  }

  Kind kind() const {
    static_assert(std::same_as<std::underlying_type_t<Kind>, decltype(detail::RawValue::kind)>);
    return static_cast<Kind>(raw_.kind);
  }
  bool isNull() const { return kind() == Kind::null; }
  bool isDictionary() const { return kind() == Kind::dictionary; }
  bool isArray() const { return kind() == Kind::array; }

  // Each answers only for a value of exactly that kind; nothing is converted.
  std::optional<bool> boolean() const;
  std::optional<std::int64_t> integer() const;
  std::optional<double> number() const;
  std::optional<std::string_view> string() const;
  std::optional<Date> date() const;
  std::optional<std::string_view> data() const;
  std::optional<Dictionary> dictionary() const;

  // The elements of an array, in order; empty for any other kind.
  std::span<const Value> elements() const;
  // The entries of a dictionary, in key order; empty for any other kind.
  std::span<const DictionaryEntry> entries() const;

  // The value under a key; a null pointer when this is no dictionary or has no such key. O(log n).
  const Value* find(std::string_view key) const;
  // The same for those to whom absent and null are one: a null value in place of what is not there.
  const Value& operator[](std::string_view key) const;

  // For a dictionary or an array its compact JSON text, for text the text itself. Any value has one: dates,
  // bytes and non-finite numbers, which JSON lacks, are written as readable text.
  std::string description() const;

  friend bool operator==(const Value& left, const Value& right);

 private:
  friend class Dictionary;
  friend class ValueArena;
  explicit Value(const detail::RawValue& adopted) noexcept : raw_(adopted) {}
  static constexpr std::uint8_t tag(Kind kind) { return static_cast<std::uint8_t>(kind); }
  static detail::RawValue nothing() { return {nullptr, {.integer = 0}, 0, 0}; }

  detail::RawValue raw_;
};

// A key and its value; the key lives as long as the dictionary that it was read from.
struct DictionaryEntry {
  std::string_view key;
  Value value;
};

// A Value known to be a dictionary. Keys are unique and iterate in byte order.
//
//   for (const auto& [key, value] : dictionary) ...
class Dictionary {
 public:
  using Entry = DictionaryEntry;

  Dictionary();
  // Of several entries with one key the last counts.
  Dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries);
  static Dictionary fromEntries(const std::vector<std::pair<std::string, Value>>& entries);

  std::size_t size() const { return entries().size(); }
  bool empty() const { return entries().empty(); }
  const Value* find(std::string_view key) const { return value_.find(key); }
  const Value& operator[](std::string_view key) const { return value_[key]; }
  bool contains(std::string_view key) const { return find(key) != nullptr; }
  auto begin() const { return entries().begin(); }
  auto end() const { return entries().end(); }

  // Copies with some entries set (a present key takes the new value) or taken out. O(n); values are shared.
  [[nodiscard]] Dictionary merging(const Dictionary& changes) const;
  [[nodiscard]] Dictionary setting(std::string_view key, Value value) const;
  [[nodiscard]] Dictionary removing(std::string_view key) const;

  std::string description() const { return value_.description(); }

  friend bool operator==(const Dictionary&, const Dictionary&) = default;

 private:
  friend class Value;
  explicit Dictionary(Value value) : value_(std::move(value)) {}
  std::span<const Entry> entries() const { return value_.entries(); }

  Value value_;
};

}  // namespace QXPlatform
