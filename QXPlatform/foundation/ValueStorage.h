#pragma once

#include <atomic>
#include <cstdint>

// What a Value holds, for those who make values; everyone else uses Value.h.

namespace QXPlatform::detail {

// The head of every allocation that Values share: a count of the Values that hold it and what to do when the
// last one goes.
struct Block {
  using Destroy = void (*)(Block*) noexcept;

  explicit Block(Destroy destroyWith) : destroy(destroyWith) {}

  std::atomic<std::uint32_t> references{1};
  Destroy destroy;
};

// The bits of a Value without its ownership; trivially copyable, so that a parser can keep a stack of them.
struct RawValue {
  union Payload {
    bool boolean;
    std::int64_t integer;
    double number;
    const char* bytes;
    const void* children;
  };
  Block* owner;
  Payload payload;
  std::uint32_t size;
  std::uint8_t kind;
};

inline void retain(Block* block) noexcept {
  block->references.fetch_add(1, std::memory_order_relaxed);
}

inline void release(Block* block) noexcept {
  if (block->references.fetch_sub(1, std::memory_order_acq_rel) == 1) block->destroy(block);
}

}  // namespace QXPlatform::detail
