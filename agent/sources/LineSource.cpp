#include "agent/sources/LineSource.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/notifications/PushLines.h"

namespace QXAgent {

namespace {

constexpr std::size_t kReadSize = 65536;
constexpr std::chrono::seconds kPause{2};

}  // namespace

LineSource::LineSource(EventLoop& loop, int descriptor, Handlers handlers)
    : descriptor_(descriptor),
      handlers_(std::move(handlers)),
      watch_(loop, descriptor, EPOLLIN, [this] { read(); }),
      again_(loop, [this] { stuck_ ? goOn() : read(); }) {
  // A file is always ready, and cannot be watched.
  if (!watch_.isUsable()) again_.start(std::chrono::microseconds(0));
}

void LineSource::read() {
  const std::size_t before = unread_.size();
  unread_.resize(before + kReadSize);
  const ssize_t count =
      QXPlatform::retryInterrupted([&] { return ::read(descriptor_, &unread_[before], kReadSize); });
  unread_.resize(before + (count > 0 ? static_cast<std::size_t>(count) : 0));
  // Another program that shares the descriptor may have been faster.
  if (count < 0 && errno == EAGAIN) return;
  if (count < 0) handlers_.failed(std::string("the lines cannot be read: ") + std::strerror(errno));
  if (count <= 0) {
    atEnd_ = true;
    unread_ += '\n';
  }
  goOn();
}

void LineSource::goOn() {
  stuck_ = !takeLines();
  if (stuck_) {
    if (watch_.isUsable()) watch_.setEnabled(false);
    return again_.start(kPause);
  }
  if (atEnd_) {
    if (watch_.isUsable()) watch_.setEnabled(false);
    return handlers_.ended();
  }
  if (watch_.isUsable()) {
    watch_.setEnabled(true);
  } else {
    again_.start(std::chrono::microseconds(0));
  }
}

bool LineSource::takeLines() {
  std::size_t start = 0;
  bool taken = true;
  for (std::size_t end = 0; taken && (end = unread_.find('\n', start)) != std::string::npos;) {
    taken = takeLine(std::string_view(unread_).substr(start, end - start));
    if (taken) start = end + 1;
  }
  unread_.erase(0, start);
  if (taken && unread_.size() > QXPlatform::kLongestPush) {
    if (!std::exchange(tooLong_, true)) refuseLong();
    unread_.clear();
  }
  return taken;
}

void LineSource::refuseLong() {
  handlers_.refuse("a line of more than " + std::to_string(QXPlatform::kLongestPush >> 20) + " MiB");
}

bool LineSource::takeLine(std::string_view line) {
  if (std::exchange(tooLong_, false)) return true;
  if (line.size() > QXPlatform::kLongestPush) {
    refuseLong();
    return true;
  }
  return line.find_first_not_of(" \t\r") == std::string_view::npos || handlers_.take(line);
}

}  // namespace QXAgent
