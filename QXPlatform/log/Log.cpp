#include "QXPlatform/log/Log.h"

#include <condition_variable>
#include <mutex>
#include <utility>

#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXPlatform/log/LogOutput.h"

namespace QXPlatform {
namespace {

struct InstalledSinks {
  std::mutex mutex;
  std::condition_variable callEnded;
  // Guarded by mutex, and so are the counts of calls in the scopes.
  ScopedLogSink* innermost = nullptr;
};

InstalledSinks& installedSinks() {
  static NeverDestroyed<InstalledSinks> sinks;
  return *sinks;
}

}  // namespace

void os_log(const LogRecord& record) {
  InstalledSinks& sinks = installedSinks();
  std::unique_lock lock(sinks.mutex);
  ScopedLogSink* const scope = sinks.innermost;
  if (scope != nullptr) ++scope->callsInProgress_;
  lock.unlock();
  if (scope == nullptr) return writeToSystemLog(record);

  scope->sink_.write(record);
  lock.lock();
  if (--scope->callsInProgress_ == 0) sinks.callEnded.notify_all();
}

ScopedLogSink::ScopedLogSink(LogSink& sink) : sink_(sink) {
  InstalledSinks& sinks = installedSinks();
  const std::lock_guard lock(sinks.mutex);
  outer_ = std::exchange(sinks.innermost, this);
}

ScopedLogSink::~ScopedLogSink() {
  InstalledSinks& sinks = installedSinks();
  std::unique_lock lock(sinks.mutex);
  sinks.innermost = outer_;
  sinks.callEnded.wait(lock, [this] { return callsInProgress_ == 0; });
}

}  // namespace QXPlatform
