#pragma once

#include <list>
#include <memory>
#include <optional>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/dispatch/DispatchGroup.h"
#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/log/LogSubject.h"

namespace QXPlatform {

struct SyncTurn;
class WorkRunner;

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
  // What a thread of the set runs it by; set when the item is handed to one.
  std::shared_ptr<WorkRunner> runner = nullptr;
  // Handed over by a thread that is none of the set, and so does not come back for it.
  bool isForeign = false;
};

// Memory for an item is taken when it is submitted, where its want can be told to the caller; from there it
// is spliced from list to list.
using WorkItems = std::list<WorkItem>;

}  // namespace QXPlatform
