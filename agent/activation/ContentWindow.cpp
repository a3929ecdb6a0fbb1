#include "agent/activation/ContentWindow.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <utility>

#include "QXPlatform/foundation/JSON.h"

namespace QXAgent {

namespace {

constexpr std::size_t kLongestOutput = std::size_t{1} << 20;

}  // namespace

ContentWindow::ContentWindow(EventLoop& loop, StartedProgram started, std::function<void(End)> ended)
    : started_(std::move(started)),
      ended_(std::move(ended)),
      watch_(loop, started_.output.get(), EPOLLIN, [this] { read(); }),
      exit_(loop, started_.program->exitDescriptor(), EPOLLIN, [this] { takeExit(); }) {}

ContentWindow::~ContentWindow() {
  // A window that stands open is the user's to close.
  if (!hasEnded_) started_.program->release();
}

bool ContentWindow::readSome() {
  std::array<char, 4096> chunk{};
  const ssize_t count =
      QXPlatform::retryInterrupted([&] { return ::read(started_.output.get(), chunk.data(), chunk.size()); });
  if (count > 0) output_.append(chunk.data(), static_cast<std::size_t>(count));
  isAtEnd_ = count == 0 || (count < 0 && errno != EAGAIN) || output_.size() > kLongestOutput;
  return count > 0 && !isAtEnd_;
}

void ContentWindow::read() {
  readSome();
  if (isAtEnd_) end();
}

void ContentWindow::takeExit() {
  // What the program has started may hold its output open for ever.
  while (readSome()) {
  }
  end();
}

void ContentWindow::end() {
  watch_.setEnabled(false);
  if (exit_.isUsable()) exit_.setEnabled(false);
  hasEnded_ = true;
  ended_(judge());
}

ContentWindow::End ContentWindow::judge() const {
  std::istringstream lines(output_);
  for (std::string line; std::getline(lines, line);) {
    const auto answer = QXPlatform::parseJSON(line);
    const auto performed = answer ? (*answer)["defaultActionPerformed"].boolean() : std::nullopt;
    if (performed) return *performed ? End::tapped : End::dismissed;
  }
  return End::failed;
}

}  // namespace QXAgent
