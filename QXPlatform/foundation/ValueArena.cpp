#include "QXPlatform/foundation/ValueArena.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "QXPlatform/foundation/FatalError.h"

namespace QXPlatform {

namespace {

constexpr std::size_t kLargestChunk = std::size_t{64} * 1024;
constexpr std::size_t kSmallestChunk = 512;
// Insertion sort needs no memory of its own and wins on dictionaries of the usual size.
constexpr std::size_t kInsertionSortLimit = 24;

std::uint32_t checkedSize(std::size_t size) {
  if (size > std::numeric_limits<std::uint32_t>::max()) fatalError("A property-list node over 4 GiB");
  return static_cast<std::uint32_t>(size);
}

// Few keys of a dictionary begin alike.
bool keyLess(const ValueArena::RawEntry& left, const ValueArena::RawEntry& right) {
  if (!left.key.empty() && !right.key.empty() && left.key.front() != right.key.front()) {
    return static_cast<unsigned char>(left.key.front()) < static_cast<unsigned char>(right.key.front());
  }
  return left.key < right.key;
}

void stableSort(std::span<ValueArena::RawEntry> entries) {
  if (entries.size() > kInsertionSortLimit) {
    std::stable_sort(entries.begin(), entries.end(), keyLess);
    return;
  }
  for (std::size_t i = 1; i < entries.size(); ++i) {
    const ValueArena::RawEntry moved = entries[i];
    std::size_t place = i;
    for (; place > 0 && keyLess(moved, entries[place - 1]); --place) entries[place] = entries[place - 1];
    entries[place] = moved;
  }
}

}  // namespace

// The first chunk holds the block's own head; further chunks are linked from it. The nodes inside refer to
// the storage without counting, so nothing has to be torn down node by node.
struct ValueArena::Storage : detail::Block {
  struct Chunk {
    Chunk* next;
  };

  Storage() : Block(destroyStorage) {}

  static void destroyStorage(Block* block) noexcept {
    auto* storage = static_cast<Storage*>(block);
    for (Chunk* chunk = storage->further; chunk != nullptr;)
      ::operator delete(std::exchange(chunk, chunk->next));
    ::operator delete(storage);
  }

  char* next = nullptr;
  char* end = nullptr;
  Chunk* further = nullptr;
  std::size_t size = 0;
};

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

void* ValueArena::allocate(std::size_t size, std::size_t alignment) {
  // A mask, since every alignment is a power of two and dividing would cost more than all the rest.
  const std::size_t padding = -reinterpret_cast<std::uintptr_t>(storage_->next) & (alignment - 1);
  if (static_cast<std::size_t>(storage_->end - storage_->next) < size + padding) {
    const std::size_t room = std::max(size + alignment, kLargestChunk);
    auto* chunk = new (::operator new(sizeof(Storage::Chunk) + room)) Storage::Chunk{storage_->further};
    storage_->further = chunk;
    storage_->next = reinterpret_cast<char*>(chunk + 1);
    storage_->end = storage_->next + room;
    storage_->size += room;
    return allocate(size, alignment);
  }
  char* place = storage_->next + padding;
  storage_->next = place + size;
  return place;
}

std::string_view ValueArena::store(std::string_view head, std::string_view tail) {
  auto* place = static_cast<char*>(allocate(head.size() + tail.size(), 1));
  if (!head.empty()) std::memcpy(place, head.data(), head.size());
  if (!tail.empty()) std::memcpy(place + head.size(), tail.data(), tail.size());
  return {place, head.size() + tail.size()};
}

detail::RawValue ValueArena::bytes(std::string_view stored, Value::Kind kind) {
  return {storage_, {.bytes = stored.data()}, checkedSize(stored.size()), tag(kind)};
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
    const bool replacedLater = i + 1 < entries.size() && entries[i + 1].key == entries[i].key;
    if (!replacedLater) new (place + count++) DictionaryEntry{entries[i].key, Value(entries[i].value)};
  }
  return {storage_, {.children = place}, checkedSize(count), tag(Value::Kind::dictionary)};
}

std::size_t ValueArena::size() const {
  return storage_->size;
}

bool ValueArena::fits(std::size_t size) const {
  return static_cast<std::size_t>(storage_->end - storage_->next) >= size;
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
