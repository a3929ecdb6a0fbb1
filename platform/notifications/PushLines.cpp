#include "platform/notifications/PushLines.h"

#include <istream>
#include <map>
#include <mutex>
#include <ostream>
#include <thread>
#include <utility>
#include <vector>

#include "platform/foundation/JSON.h"
#include "platform/notifications/NotificationJSON.h"

namespace platform {

namespace {

constexpr std::size_t kLongestLine = std::size_t{4} * 1024 * 1024;

// Lets several threads take from one source and puts their answers back into its order.
class OrderedAnswers {
 public:
  OrderedAnswers(PushSource& source, std::ostream& output, const PushAnswering& answering)
      : source_(source), output_(output), answering_(answering) {}

  std::optional<std::pair<std::size_t, PushText>> take() {
    const std::lock_guard lock(sourceMutex_);
    auto push = source_.next();
    if (!push) return std::nullopt;
    return std::pair(taken_++, *std::move(push));
  }

  void put(std::size_t position, const Dictionary& answer, bool isError) {
    const auto style = answering_.pretty ? JSONStyle::pretty : JSONStyle::compact;
    // Content that a host filled with what JSON lacks is still shown, in words.
    auto text = writeJSON(answer, style);
    const std::lock_guard lock(outputMutex_);
    waiting_.emplace(position, text ? *std::move(text) : answer.description());
    for (auto next = waiting_.begin(); next != waiting_.end() && next->first == written_;
         next = waiting_.erase(next)) {
      output_ << next->second << '\n';
      ++written_;
    }
    output_.flush();
    if (isError) ++errors_;
    ++answered_;
    if (answering_.progress) answering_.progress(answered_);
  }

  std::size_t errors() const { return errors_; }

 private:
  std::mutex sourceMutex_;
  PushSource& source_;
  std::size_t taken_ = 0;

  std::mutex outputMutex_;
  std::ostream& output_;
  const PushAnswering& answering_;
  std::map<std::size_t, std::string> waiting_;
  std::size_t written_ = 0;
  std::size_t answered_ = 0;
  std::size_t errors_ = 0;
};

Result<Dictionary> answerPush(const PushText& push, const PushAnswering& answering) {
  if (push.unreadable) return *push.unreadable;
  const auto parsed = parseJSON(push.text);
  if (!parsed) return parsed.error();
  const auto request = notificationRequestFromJSON(*parsed);
  if (!request) return request.error();
  return answering.answer(*request);
}

Dictionary errorAnswer(const PushText& push, const Error& error) {
  const Dictionary answer{{"line", static_cast<std::int64_t>(push.line)}, {"error", error.message}};
  return push.source.empty() ? answer : answer.setting("file", push.source);
}

}  // namespace

PushLineSource::PushLineSource(std::istream& input, std::string name)
    : input_(input), name_(std::move(name)) {}

std::optional<PushText> PushLineSource::next() {
  while (input_.good()) {
    PushText push = readLine();
    if (push.text.find_first_not_of(" \t\r") != std::string::npos || push.unreadable) return push;
  }
  return std::nullopt;
}

PushText PushLineSource::readLine() {
  PushText push{{}, ++line_, name_, std::nullopt};
  std::streambuf& buffer = *input_.rdbuf();
  for (int byte = buffer.sbumpc(); byte != '\n'; byte = buffer.sbumpc()) {
    if (byte == std::istream::traits_type::eof()) {
      input_.setstate(std::ios::eofbit);
      break;
    }
    if (push.text.size() < kLongestLine) {
      push.text.push_back(static_cast<char>(byte));
    } else {
      push.unreadable = Error{"a push of more than 4 MiB"};
    }
  }
  return push;
}

std::size_t answerPushes(PushSource& source, std::ostream& output, const PushAnswering& answering) {
  OrderedAnswers answers(source, output, answering);
  const auto work = [&] {
    while (const auto taken = answers.take()) {
      const auto& [position, push] = *taken;
      const auto answer = answerPush(push, answering);
      answers.put(position, answer ? *answer : errorAnswer(push, answer.error()), !answer.ok());
    }
  };
  std::vector<std::thread> helpers;
  for (std::size_t i = 1; i < answering.jobs; ++i) helpers.emplace_back(work);
  work();
  for (std::thread& helper : helpers) helper.join();
  return answers.errors();
}

}  // namespace platform
