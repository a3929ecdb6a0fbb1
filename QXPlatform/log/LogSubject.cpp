#include "QXPlatform/log/LogSubject.h"

#include <utility>

namespace QXPlatform {
namespace {

thread_local LogSubject threadSubject;

}  // namespace

LogSubject currentLogSubject() {
  return threadSubject;
}

ScopedLogSubject::ScopedLogSubject(LogSubject subject)
    : previous_(std::exchange(threadSubject, std::move(subject))) {}

ScopedLogSubject::~ScopedLogSubject() {
  threadSubject = std::move(previous_);
}

}  // namespace QXPlatform
