#pragma once

#include <optional>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/dispatch/DispatchGroup.h"
#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/log/LogSubject.h"

namespace QXPlatform {

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
  LogSubject subject = currentLogSubject();
};

}  // namespace QXPlatform
