#include "QXPlatform/dispatch/ThreadName.h"

#include <pthread.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace QXPlatform {
namespace {

constexpr std::size_t kLongestName = 15;

// A new thread bears the name of the one that started it.
thread_local bool hasOwnName = false;
thread_local std::array<char, kLongestName + 1> currentName{};

}  // namespace

void setCurrentThreadName(std::string_view name) {
  if (name.size() > kLongestName) name.remove_prefix(name.size() - kLongestName);
  if (hasOwnName && name == currentName.data()) return;
  hasOwnName = true;
  currentName.fill('\0');
  std::copy(name.begin(), name.end(), currentName.begin());
  pthread_setname_np(pthread_self(), currentName.data());
}

}  // namespace QXPlatform
