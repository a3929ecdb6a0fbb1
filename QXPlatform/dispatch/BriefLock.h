#pragma once

#include <mutex>

namespace QXPlatform {

// Locks what nobody holds for longer than it takes to fall asleep and to be woken: worth a moment's wait
// awake.
inline std::unique_lock<std::mutex> lockBriefly(std::mutex& mutex) {
  constexpr int kMostTries = 200;
  std::unique_lock lock(mutex, std::try_to_lock);
  for (int tries = 1; !lock && tries < kMostTries; ++tries) lock.try_lock();
  if (!lock) lock.lock();
  return lock;
}

}  // namespace QXPlatform
