#pragma once

#include <optional>

#include "platform/dispatch/Activity.h"
#include "platform/dispatch/DispatchGroup.h"
#include "platform/dispatch/DispatchQueue.h"

namespace platform {

struct SyncTurn;

// A piece of work on its way from a queue to a thread. Exactly one of `work` and `turn` is set.
struct WorkItem {
  DispatchQueue::Work work;
  // A caller of sync() that waits for its turn to run the work itself.
  SyncTurn* turn = nullptr;
  // Runs while no other item of its queue does.
  bool exclusive = false;
  std::optional<DispatchGroup> group = std::nullopt;
  Activity activity{};
};

}  // namespace platform
