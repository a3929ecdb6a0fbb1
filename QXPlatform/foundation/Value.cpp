#include "QXPlatform/foundation/Value.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXPlatform {

namespace {

using detail::Block;
using Entry = DictionaryEntry;

// Below this many entries comparing sizes one by one beats a binary search.
constexpr std::size_t kLinearSearchLimit = 8;

std::uint32_t checkedSize(std::size_t size) {
  if (size > std::numeric_limits<std::uint32_t>::max()) fatalError("A property-list node over 4 GiB");
  return static_cast<std::uint32_t>(size);
}

struct BytesBlock : Block {
  BytesBlock() : Block(destroyBlock) {}
  char* bytes() { return reinterpret_cast<char*>(this + 1); }

  static BytesBlock* make(std::string_view content) {
    auto* block = new (::operator new(sizeof(BytesBlock) + content.size())) BytesBlock;
    std::memcpy(block->bytes(), content.data(), content.size());
    return block;
  }
  static void destroyBlock(Block* block) noexcept { ::operator delete(block); }
};

struct ArrayBlock : Block {
  explicit ArrayBlock(const std::vector<Value>& content) : Block(destroyBlock), elements(content) {}
  static void destroyBlock(Block* block) noexcept { delete static_cast<ArrayBlock*>(block); }

  const std::vector<Value> elements;
};

// The text of the keys follows it.
struct DictionaryBlock : Block {
  explicit DictionaryBlock(std::vector<Entry> sorted) : Block(destroyBlock), entries(std::move(sorted)) {}

  // `sorted`: unique keys in byte order. The keys' text is copied.
  static DictionaryBlock* make(std::vector<Entry> sorted) {
    std::size_t keyBytes = 0;
    for (const Entry& entry : sorted) keyBytes += entry.key.size();
    auto* block = new (::operator new(sizeof(DictionaryBlock) + keyBytes)) DictionaryBlock(std::move(sorted));
    char* place = reinterpret_cast<char*>(block + 1);
    for (Entry& entry : block->entries) {
      const std::string_view key = entry.key;
      entry.key = {place, key.size()};
      place = std::ranges::copy(key, place).out;
    }
    return block;
  }
  static void destroyBlock(Block* block) noexcept {
    auto* dictionary = static_cast<DictionaryBlock*>(block);
    dictionary->~DictionaryBlock();
    ::operator delete(dictionary);
  }

  std::vector<Entry> entries;
};

bool keyLess(const Entry& left, const Entry& right) {
  return left.key < right.key;
}

// Most keys differ in their sizes or where they begin.
bool sameKey(std::string_view left, std::string_view right) {
  return left.size() == right.size() &&
         (left.empty() || (left.front() == right.front() && left.substr(1) == right.substr(1)));
}

// Equal keys stay in their order. The library's sort takes memory each time.
void sortByKey(std::vector<Entry>& entries) {
  constexpr std::size_t kInsertionSortLimit = 24;
  if (entries.size() > kInsertionSortLimit) {
    std::stable_sort(entries.begin(), entries.end(), keyLess);
    return;
  }
  for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
    std::rotate(std::upper_bound(entries.begin(), entry, *entry, keyLess), entry, std::next(entry));
  }
}

// Sorts by key; of equal keys only the last stays.
void sortUnique(std::vector<Entry>& entries) {
  sortByKey(entries);
  auto kept = entries.begin();
  for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
    if (kept != entries.begin() && std::prev(kept)->key == entry->key) {
      std::prev(kept)->value = std::move(entry->value);
    } else {
      if (kept != entry) *kept = std::move(*entry);
      ++kept;
    }
  }
  entries.erase(kept, entries.end());
}

detail::RawValue rawDictionary(std::vector<Entry> sorted) {
  const auto kind = static_cast<std::uint8_t>(Value::Kind::dictionary);
  if (sorted.empty()) return {nullptr, {.children = nullptr}, 0, kind};
  DictionaryBlock* block = DictionaryBlock::make(std::move(sorted));
  return {block, {.children = block->entries.data()}, checkedSize(block->entries.size()), kind};
}

detail::RawValue rawBytes(std::string_view content, Value::Kind kind) {
  const auto tag = static_cast<std::uint8_t>(kind);
  if (content.empty()) return {nullptr, {.bytes = ""}, 0, tag};
  BytesBlock* block = BytesBlock::make(content);
  return {block, {.bytes = block->bytes()}, checkedSize(content.size()), tag};
}

}  // namespace

Value::Value(std::string_view text) : raw_(rawBytes(text, Kind::string)) {}

Value::Value(const Data& data) : raw_(rawBytes(data.view(), Kind::data)) {}

Value::Value(const Dictionary& dictionary) : Value(dictionary.value_) {}

Value::Value(const std::vector<Value>& elements) : raw_{nullptr, {.children = nullptr}, 0, tag(Kind::array)} {
  if (elements.empty()) return;
  auto* block = new ArrayBlock(elements);
  raw_ = {block, {.children = block->elements.data()}, checkedSize(elements.size()), tag(Kind::array)};
}

std::optional<bool> Value::boolean() const {
  return kind() == Kind::boolean ? std::optional(raw_.payload.boolean) : std::nullopt;
}

std::optional<std::int64_t> Value::integer() const {
  return kind() == Kind::integer ? std::optional(raw_.payload.integer) : std::nullopt;
}

std::optional<double> Value::number() const {
  return kind() == Kind::number ? std::optional(raw_.payload.number) : std::nullopt;
}

std::optional<std::string_view> Value::string() const {
  return kind() == Kind::string ? std::optional(std::string_view(raw_.payload.bytes, raw_.size))
                                : std::nullopt;
}

std::optional<Date> Value::date() const {
  return kind() == Kind::date ? std::optional(Date{raw_.payload.number}) : std::nullopt;
}

std::optional<std::string_view> Value::data() const {
  return kind() == Kind::data ? std::optional(std::string_view(raw_.payload.bytes, raw_.size)) : std::nullopt;
}

std::optional<Dictionary> Value::dictionary() const {
  return isDictionary() ? std::optional(Dictionary(*this)) : std::nullopt;
}

std::span<const Value> Value::elements() const {
  if (!isArray()) return {};
  return {static_cast<const Value*>(raw_.payload.children), raw_.size};
}

std::span<const DictionaryEntry> Value::entries() const {
  if (!isDictionary()) return {};
  return {static_cast<const Entry*>(raw_.payload.children), raw_.size};
}

const Value* Value::find(std::string_view key) const {
  const auto all = entries();
  if (all.size() <= kLinearSearchLimit) {
    for (const Entry& entry : all) {
      if (sameKey(entry.key, key)) return &entry.value;
    }
    return nullptr;
  }
  const auto found =
      std::lower_bound(all.begin(), all.end(), key,
                       [](const Entry& entry, std::string_view wanted) { return entry.key < wanted; });
  return found != all.end() && found->key == key ? &found->value : nullptr;
}

const Value& Value::operator[](std::string_view key) const {
  static const NeverDestroyed<Value> null;
  const Value* found = find(key);
  return found != nullptr ? *found : *null;
}

bool operator==(const Value& left, const Value& right) {
  using Kind = Value::Kind;
  if (left.kind() != right.kind()) return false;
  switch (left.kind()) {
    case Kind::null:
      return true;
    case Kind::boolean:
      return left.raw_.payload.boolean == right.raw_.payload.boolean;
    case Kind::integer:
      return left.raw_.payload.integer == right.raw_.payload.integer;
    case Kind::number:
    case Kind::date:
      return left.raw_.payload.number == right.raw_.payload.number;
    case Kind::string:
    case Kind::data:
      return std::string_view(left.raw_.payload.bytes, left.raw_.size) ==
             std::string_view(right.raw_.payload.bytes, right.raw_.size);
    case Kind::array:
      return std::ranges::equal(left.elements(), right.elements());
    case Kind::dictionary:
      return std::ranges::equal(left.entries(), right.entries(), [](const Entry& a, const Entry& b) {
        return a.key == b.key && a.value == b.value;
      });
  }
  return false;
}

Dictionary::Dictionary() : value_(Value(rawDictionary({}))) {}

Dictionary::Dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries) {
  std::vector<Entry> sorted;
  sorted.reserve(entries.size());
  for (const auto& [key, value] : entries) sorted.push_back({key, value});
  sortUnique(sorted);
  value_ = Value(rawDictionary(std::move(sorted)));
}

Dictionary Dictionary::fromEntries(const std::vector<std::pair<std::string, Value>>& entries) {
  std::vector<Entry> sorted;
  sorted.reserve(entries.size());
  for (const auto& [key, value] : entries) sorted.push_back({key, value});
  sortUnique(sorted);
  return Dictionary(Value(rawDictionary(std::move(sorted))));
}

Dictionary Dictionary::merging(const Dictionary& changes) const {
  if (changes.empty()) return *this;
  if (empty()) return changes;
  std::vector<Entry> merged;
  merged.reserve(size() + changes.size());
  auto own = begin();
  auto change = changes.begin();
  while (own != end() || change != changes.end()) {
    if (change == changes.end() || (own != end() && own->key < change->key)) {
      merged.push_back(*own++);
    } else {
      if (own != end() && own->key == change->key) ++own;
      merged.push_back(*change++);
    }
  }
  return Dictionary(Value(rawDictionary(std::move(merged))));
}

Dictionary Dictionary::setting(std::string_view key, Value value) const {
  return merging(Dictionary{{key, std::move(value)}});
}

Dictionary Dictionary::removing(std::string_view key) const {
  if (!contains(key)) return *this;
  std::vector<Entry> rest;
  rest.reserve(size() - 1);
  std::ranges::copy_if(entries(), std::back_inserter(rest),
                       [&](const Entry& entry) { return entry.key != key; });
  return Dictionary(Value(rawDictionary(std::move(rest))));
}

}  // namespace QXPlatform
