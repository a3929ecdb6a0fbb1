#include "agent/loop/EventLoop.h"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <stdexcept>
#include <utility>

namespace QXAgent {

EventLoop::EventLoop() {
  // A program that reads no more, or a file that may not grow, is an error of the write, not the end.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  sd_event* event = nullptr;
  if (sd_event_new(&event) < 0) throw std::runtime_error("no event loop");
  event_.reset(event);
  sigset_t signals;
  sigemptyset(&signals);
  // The library takes the ends of children, too, as signals that are blocked.
  for (const int signal : {SIGTERM, SIGINT, SIGCHLD}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  const auto end = [](sd_event_source*, const signalfd_siginfo*, void* self) {
    auto* loop = static_cast<EventLoop*>(self);
    if (loop->endHandler_) loop->endHandler_();
    loop->stop(0);
    return 0;
  };
  for (const int signal : {SIGTERM, SIGINT}) sd_event_add_signal(event, nullptr, signal, end, this);
}

int EventLoop::run() {
  return sd_event_loop(event_.get());
}

void EventLoop::stop(int exitCode) {
  sd_event_exit(event_.get(), exitCode);
}

void EventLoop::reap(int child) {
  const auto forget = [](sd_event_source*, const siginfo_t*, void*) { return 0; };
  sd_event_add_child(event_.get(), nullptr, child, WEXITED, forget, nullptr);
}

Timer::Timer(EventLoop& loop, std::function<void()> handler) : handler_(std::move(handler)) {
  sd_event_source* source = nullptr;
  const auto call = [](sd_event_source*, std::uint64_t, void* self) {
    auto* timer = static_cast<Timer*>(self);
    timer->running_ = false;
    timer->handler_();
    return 0;
  };
  if (sd_event_add_time(loop.get(), &source, CLOCK_MONOTONIC, 0, 0, call, this) < 0)
    throw std::runtime_error("no timer");
  source_.reset(source);
  sd_event_source_set_enabled(source, SD_EVENT_OFF);
}

void Timer::start(std::chrono::microseconds delay) {
  const auto microseconds = static_cast<std::uint64_t>(std::max<std::int64_t>(delay.count(), 0));
  // Left to itself the library waits up to a quarter of a second more, to wake up less often.
  const auto accuracy = std::clamp<std::int64_t>(delay.count() / 10, 1, 250'000);
  sd_event_source_set_time_accuracy(source_.get(), static_cast<std::uint64_t>(accuracy));
  sd_event_source_set_time_relative(source_.get(), microseconds);
  sd_event_source_set_enabled(source_.get(), SD_EVENT_ONESHOT);
  running_ = true;
}

void Timer::stop() {
  sd_event_source_set_enabled(source_.get(), SD_EVENT_OFF);
  running_ = false;
}

Watch::Watch(EventLoop& loop, int descriptor, std::uint32_t events, std::function<void()> handler)
    : handler_(std::move(handler)) {
  sd_event_source* source = nullptr;
  const auto call = [](sd_event_source*, int, std::uint32_t, void* self) {
    static_cast<Watch*>(self)->handler_();
    return 0;
  };
  if (sd_event_add_io(loop.get(), &source, descriptor, events, call, this) >= 0) source_.reset(source);
}

void Watch::setEnabled(bool enabled) {
  sd_event_source_set_enabled(source_.get(), enabled ? SD_EVENT_ON : SD_EVENT_OFF);
}

}  // namespace QXAgent
