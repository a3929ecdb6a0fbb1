#pragma once

#include <string>

#include "QXPlatform/dispatch/WorkItem.h"

namespace QXPlatform {

// What a thread of the set runs items for. run() is called with one item on such a thread, with no lock held.
class WorkRunner {
 public:
  virtual ~WorkRunner() = default;
  virtual const std::string& label() const = 0;
  virtual void run(WorkItems item) = 0;
};

}  // namespace QXPlatform
