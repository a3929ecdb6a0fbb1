#include "agent/extensions/ExtensionProcess.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "QXPlatform/foundation/JSON.h"

namespace QXAgent {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;

constexpr std::size_t kReadSize = 65536;
constexpr std::size_t kMostInPipe = std::size_t{1} << 20;
constexpr std::size_t kLongestAnswer = std::size_t{64} << 20;
// The notification lies two levels deep in its answer, and the host may have added to it.
constexpr QXPlatform::JSONLimits kAnswerLimits{QXPlatform::kJSONWritingDepthLimit, 4 * kLongestAnswer};

}  // namespace

ExtensionProcess::ExtensionProcess(StartedProgram started, std::function<void(std::string_view)> chatter)
    : program_(std::move(started.program)),
      input_(std::move(started.input)),
      output_(std::move(started.output)),
      poll_(epoll_create1(EPOLL_CLOEXEC)),
      chatter_(std::move(chatter)) {
  watch(output_.get(), EPOLLIN);
  // What the program has started may hold its output open for ever, so its exit counts as well.
  if (program_->exitDescriptor() >= 0) watch(program_->exitDescriptor(), EPOLLIN);
}

void ExtensionProcess::watch(int descriptor, std::uint32_t events) const {
  epoll_event event{events, {.fd = descriptor}};
  epoll_ctl(poll_.get(), EPOLL_CTL_ADD, descriptor, &event);
}

void ExtensionProcess::ask(const Dictionary& request, Completion completion) {
  const auto text = QXPlatform::writeJSON(request, QXPlatform::JSONStyle::compact);
  if (!text) return completion(text.error());
  const bool wasIdle = unwritten_.empty();
  questions_.insert_or_assign(std::string(request["identifier"].string().value_or("")),
                              Question{++lines_, std::move(completion)});
  unwritten_.append(*text).push_back('\n');
  if (wasIdle && input_) {
    writePending();
    if (!unwritten_.empty()) watch(input_->get(), EPOLLOUT);
  }
}

void ExtensionProcess::writePending() {
  std::string_view rest = unwritten_;
  while (!rest.empty()) {
    const ssize_t written =
        QXPlatform::retryInterrupted([&] { return write(input_->get(), rest.data(), rest.size()); });
    if (written < 0 && errno == EAGAIN) break;
    // A program that reads no more shows that by its exit; until then its answers count.
    rest.remove_prefix(written < 0 ? rest.size() : static_cast<std::size_t>(written));
  }
  unwritten_.erase(0, unwritten_.size() - rest.size());
}

void ExtensionProcess::closeInput() {
  closing_ = true;
  if (unwritten_.empty()) input_.reset();
}

void ExtensionProcess::end(std::string reason) {
  if (!endReason_) endReason_ = std::move(reason);
  program_->kill();
}

void ExtensionProcess::handleEvents() {
  std::array<epoll_event, 4> events{};
  const int count = epoll_wait(poll_.get(), events.data(), static_cast<int>(events.size()), 0);
  bool exited = false;
  for (int i = 0; i < count; ++i) {
    const int descriptor = events.at(static_cast<std::size_t>(i)).data.fd;
    if (descriptor == program_->exitDescriptor()) exited = true;
    if (!input_ || descriptor != input_->get()) continue;
    writePending();
    if (!unwritten_.empty()) continue;
    epoll_ctl(poll_.get(), EPOLL_CTL_DEL, descriptor, nullptr);
    if (closing_) input_.reset();
  }
  if (!ended_) readAnswers();
  if (!exited) return;
  exited_ = true;
  epoll_ctl(poll_.get(), EPOLL_CTL_DEL, program_->exitDescriptor(), nullptr);
  // What it wrote before it exited; what others write to its output is not waited for.
  for (std::size_t left = kMostInPipe; left > 0 && !ended_ && readAnswers(); left -= kReadSize) {
  }
  failAll();
}

bool ExtensionProcess::readAnswers() {
  std::size_t lineEnd = unread_.size();
  unread_.resize(lineEnd + kReadSize);
  const ssize_t count =
      QXPlatform::retryInterrupted([&] { return read(output_.get(), &unread_[lineEnd], kReadSize); });
  unread_.resize(lineEnd + (count > 0 ? static_cast<std::size_t>(count) : 0));
  if (count < 0 && errno == EAGAIN) return false;
  if (count <= 0) {
    failAll();
    return false;
  }
  std::size_t start = 0;
  for (; (lineEnd = unread_.find('\n', lineEnd)) != std::string::npos; start = ++lineEnd)
    takeLine(std::string_view(unread_).substr(start, lineEnd - start));
  unread_.erase(0, start);
  if (unread_.size() > kLongestAnswer) end("the extension has printed 64 MiB without a line break");
  return true;
}

void ExtensionProcess::takeLine(std::string_view line) {
  const auto parsed = QXPlatform::parseJSON(line, kAnswerLimits);
  const auto reply = parsed ? parsed->dictionary() : std::nullopt;
  if (reply && (takeResult(*reply) || takeRefusal(*reply))) return;
  chatter_(line);
}

bool ExtensionProcess::takeResult(const Dictionary& reply) {
  const auto identifier = reply["identifier"].string();
  if (!identifier || !reply.contains("outcome") || !reply.contains("content")) return false;
  const auto asked = questions_.find(*identifier);
  if (asked == questions_.end()) return false;
  auto question = questions_.extract(asked);
  question.mapped().completion(reply);
  return true;
}

bool ExtensionProcess::takeRefusal(const Dictionary& reply) {
  const auto line = reply["line"].integer();
  const auto error = reply["error"].string();
  if (!line || !error) return false;
  const auto asked =
      std::ranges::find_if(questions_, [&](const auto& question) { return *line == question.second.line; });
  if (asked == questions_.end()) return false;
  auto question = questions_.extract(asked);
  hasRefused_ = true;
  question.mapped().completion(Error{std::string(*error)});
  return true;
}

void ExtensionProcess::failAll() {
  if (std::exchange(ended_, true)) return;
  owesAnswers_ = !questions_.empty();
  input_.reset();
  epoll_ctl(poll_.get(), EPOLL_CTL_DEL, output_.get(), nullptr);
  if (program_->exitDescriptor() < 0) exited_ = true;  // as far as can be told
  const Error error{endReason_.value_or("the extension ended before it answered")};
  for (auto& [identifier, question] : std::exchange(questions_, {})) question.completion(error);
}

}  // namespace QXAgent
