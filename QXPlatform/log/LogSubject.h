#pragma once

#include <memory>
#include <string>

namespace QXPlatform {

// What the log lines of a thread are about: the identifier of the notification that it works on; null when it
// works on none. Work items and transfers carry it on from the thread that makes them.
using LogSubject = std::shared_ptr<const std::string>;

// The calling thread's.
LogSubject currentLogSubject();

// Makes it the calling thread's for as long as this lives. REQUIRES: those of a thread end in reverse order,
// on it.
class ScopedLogSubject {
 public:
  explicit ScopedLogSubject(LogSubject subject);
  ~ScopedLogSubject();
  ScopedLogSubject(const ScopedLogSubject&) = delete;
  ScopedLogSubject& operator=(const ScopedLogSubject&) = delete;

 private:
  const LogSubject subject_;
  const LogSubject* const previous_;
};

}  // namespace QXPlatform
