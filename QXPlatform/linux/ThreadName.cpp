#include "QXPlatform/dispatch/ThreadName.h"

#include <pthread.h>

#include <string>

namespace QXPlatform {

ThreadHandle currentThread() {
  return pthread_self();
}

void setCurrentThreadName(std::string_view name) {
  setThreadName(pthread_self(), name);
}

void setThreadName(ThreadHandle thread, std::string_view name) {
  if (name.size() > kLongestThreadName) name.remove_prefix(name.size() - kLongestThreadName);
  pthread_setname_np(thread, std::string(name).c_str());
}

}  // namespace QXPlatform
