#pragma once

#include <systemd/sd-event.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

#include "QXPlatform/foundation/Handle.h"

namespace QXAgent {

// The one thread that everything in the agent runs on. What its sources call may not throw.
class EventLoop {
 public:
  EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  // Runs until stop(), SIGTERM or SIGINT; returns the exit code.
  int run();
  void stop(int exitCode);
  // What is to be done at such a signal, before the loop ends.
  void setEndHandler(std::function<void()> handler) { endHandler_ = std::move(handler); }

  // Takes note of a child's end, whenever it comes, lest it stay behind as a dead process.
  void reap(int child);

  sd_event* get() const { return event_.get(); }

 private:
  QXPlatform::Handle<sd_event, sd_event_unref> event_;
  std::function<void()> endHandler_;
};

// Calls back once, some time after it was started, as soon as may be for no time; starting it again moves the
// time.
class Timer {
 public:
  Timer(EventLoop& loop, std::function<void()> handler);
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  void start(std::chrono::microseconds delay);
  void stop();
  bool isRunning() const { return running_; }

 private:
  std::function<void()> handler_;
  QXPlatform::Handle<sd_event_source, sd_event_source_disable_unref> source_;
  bool running_ = false;
};

// Calls back whenever a descriptor is ready.
class Watch {
 public:
  // `events`: of epoll, such as EPOLLIN. The descriptor must outlive the watch.
  Watch(EventLoop& loop, int descriptor, std::uint32_t events, std::function<void()> handler);
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  // False for a descriptor that is always ready, such as a file's.
  bool isUsable() const { return source_ != nullptr; }
  void setEnabled(bool enabled);

 private:
  std::function<void()> handler_;
  QXPlatform::Handle<sd_event_source, sd_event_source_disable_unref> source_;
};

}  // namespace QXAgent
