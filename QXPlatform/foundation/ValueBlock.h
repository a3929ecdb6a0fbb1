#pragma once

#include <atomic>
#include <cstdint>

namespace QXPlatform::detail {

// The head of every allocation that Values share: a count of the Values that hold it and what to do when the
// last one goes.
struct Block {
  using Destroy = void (*)(Block*) noexcept;

  explicit Block(Destroy destroyWith) : destroy(destroyWith) {}

  std::atomic<std::uint32_t> references{1};
  Destroy destroy;
};

}  // namespace QXPlatform::detail
