#include "QXPlatform/log/LogSubject.h"

#include <utility>

namespace QXPlatform {
namespace {

// Only a pointer: a thread's object with a destructor takes memory to be registered for its end, and the
// process dies when there is none.
thread_local const LogSubject* threadSubject = nullptr;

}  // namespace

LogSubject currentLogSubject() {
  return threadSubject != nullptr ? *threadSubject : nullptr;
}

ScopedLogSubject::ScopedLogSubject(LogSubject subject)
    : subject_(std::move(subject)), previous_(std::exchange(threadSubject, &subject_)) {}

ScopedLogSubject::~ScopedLogSubject() {
  threadSubject = previous_;
}

}  // namespace QXPlatform
