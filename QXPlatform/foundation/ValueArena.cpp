#include "QXPlatform/foundation/ValueArena.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace QXPlatform {

namespace {

constexpr std::size_t kLargestChunk = std::size_t{64} * 1024;
constexpr std::size_t kSmallestChunk = 512;
// Insertion sort needs no memory of its own and wins on dictionaries of the usual size.
constexpr std::size_t kInsertionSortLimit = 24;

using RawEntry = ValueArena::RawEntry;

// Few keys of a dictionary begin alike.
bool keyLess(const RawEntry& left, const RawEntry& right) {
  if (!left.key.empty() && !right.key.empty() && left.key.front() != right.key.front()) {
    return static_cast<unsigned char>(left.key.front()) < static_cast<unsigned char>(right.key.front());
  }
  return left.key < right.key;
}

bool sameKey(const RawEntry& left, const RawEntry& right) {
  return left.key.size() == right.key.size() &&
         (left.key.empty() || (left.key.front() == right.key.front() && left.key == right.key));
}

void stableSort(std::span<RawEntry> entries) {
  if (entries.size() > kInsertionSortLimit) {
    std::stable_sort(entries.begin(), entries.end(), keyLess);
    return;
  }
  for (std::size_t i = 1; i < entries.size(); ++i) {
    if (!keyLess(entries[i], entries[i - 1])) continue;
    const RawEntry moved = entries[i];
    std::size_t place = i;
    do {
      entries[place] = entries[place - 1];
      --place;
    } while (place > 0 && keyLess(moved, entries[place - 1]));
    entries[place] = moved;
  }
}

}  // namespace

void ValueArena::Storage::destroyStorage(Block* block) noexcept {
  auto* storage = static_cast<Storage*>(block);
  for (Chunk* chunk = storage->further; chunk != nullptr;)
    ::operator delete(std::exchange(chunk, chunk->next));
  ::operator delete(storage);
}

ValueArena::ValueArena(std::size_t expectedBytes) {
  const std::size_t room = std::clamp(expectedBytes, kSmallestChunk, kLargestChunk);
  storage_ = new (::operator new(sizeof(Storage) + room)) Storage;
  storage_->next = reinterpret_cast<char*>(storage_ + 1);
  storage_->end = storage_->next + room;
  storage_->size = room;
}

ValueArena::~ValueArena() {
  if (storage_ != nullptr) detail::release(storage_);
}

void* ValueArena::allocateInNewChunk(std::size_t size, std::size_t alignment) {
  // As much again, so that a guess which was a little short does not cost a large chunk.
  const std::size_t room = std::max(size + alignment, std::min(storage_->size, kLargestChunk));
  auto* chunk = new (::operator new(sizeof(Chunk) + room)) Chunk{storage_->further};
  storage_->further = chunk;
  storage_->next = reinterpret_cast<char*>(chunk + 1);
  storage_->end = storage_->next + room;
  storage_->size += room;
  return allocate(size, alignment);
}

std::string_view ValueArena::store(std::string_view head, std::string_view tail) {
  auto* place = static_cast<char*>(allocate(head.size() + tail.size(), 1));
  if (!head.empty()) std::memcpy(place, head.data(), head.size());
  if (!tail.empty()) std::memcpy(place + head.size(), tail.data(), tail.size());
  return {place, head.size() + tail.size()};
}

detail::RawValue ValueArena::array(std::span<const RawValue> elements) {
  auto* place = static_cast<Value*>(allocate(elements.size_bytes(), alignof(Value)));
  for (std::size_t i = 0; i < elements.size(); ++i) new (place + i) Value(elements[i]);
  return {storage_, {.children = place}, checkedSize(elements.size()), tag(Value::Kind::array)};
}

detail::RawValue ValueArena::dictionary(std::span<RawEntry> entries) {
  stableSort(entries);
  auto* place = static_cast<DictionaryEntry*>(
      allocate(entries.size() * sizeof(DictionaryEntry), alignof(DictionaryEntry)));
  std::size_t count = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const bool replacedLater = i + 1 < entries.size() && sameKey(entries[i], entries[i + 1]);
    if (!replacedLater) new (place + count++) DictionaryEntry{entries[i].key, Value(entries[i].value)};
  }
  return {storage_, {.children = place}, checkedSize(count), tag(Value::Kind::dictionary)};
}

Value ValueArena::finish(const RawValue& root) && {
  Storage* storage = std::exchange(storage_, nullptr);
  if (root.owner == nullptr) {
    detail::release(storage);
    return Value(root);
  }
  // The arena's own reference passes to the root.
  return Value(root);
}

}  // namespace QXPlatform
