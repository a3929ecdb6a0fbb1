#include "QXPlatform/notifications/PushLines.h"

#include <condition_variable>
#include <istream>
#include <map>
#include <mutex>
#include <ostream>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "QXPlatform/notifications/NotificationJSON.h"

namespace QXPlatform {

namespace {

// How many answers a job may wait for an earlier one before no more pushes are taken.
constexpr std::size_t kMostWaitingPerJob = 4;

std::string compactLine(const AnsweredPush& answered) {
  const Dictionary answer = answerToJSON(answered);
  // Content that a host filled with what JSON lacks is still shown, in words.
  auto text = writeJSON(answer, JSONStyle::compact);
  return (text ? *std::move(text) : answer.description()) + '\n';
}

// Lets several threads take from one source and, if asked to, puts their answers back into its order.
class OrderedAnswers {
 public:
  OrderedAnswers(PushSource& source, std::ostream& output, const PushAnswering& answering)
      : source_(source), output_(output), answering_(answering) {}

  std::optional<std::pair<std::size_t, PushText>> take() {
    const std::lock_guard lock(sourceMutex_);
    if (!waitForRoom()) return std::nullopt;
    auto push = source_.next();
    if (!push) return std::nullopt;
    return std::pair(taken_++, *std::move(push));
  }

  void put(const AnsweredPush& answered) {
    std::string text = answering_.present ? answering_.present(answered) : compactLine(answered);
    const std::lock_guard lock(outputMutex_);
    waiting_.emplace(answering_.inOrder ? answered.position : written_, std::move(text));
    for (auto next = waiting_.begin(); next != waiting_.end() && next->first == written_;
         next = waiting_.erase(next)) {
      // In one piece, so that what a host prints comes between the lines.
      output_ << next->second;
      ++written_;
    }
    output_.flush();
    if (!output_) result_.outputFailed = true;
    room_.notify_all();
    if (!answered.answer) ++result_.errors;
    ++answered_;
    if (answering_.progress) answering_.progress(answered_);
  }

  PushAnswers result() const { return result_; }

 private:
  // Returns whether another answer will find a place: not after the output has failed.
  bool waitForRoom() {
    std::unique_lock lock(outputMutex_);
    const std::size_t most = kMostWaitingPerJob * answering_.jobs;
    room_.wait(lock, [&] { return result_.outputFailed || waiting_.size() < most; });
    return !result_.outputFailed;
  }

  std::mutex sourceMutex_;
  PushSource& source_;
  std::size_t taken_ = 0;

  std::mutex outputMutex_;
  std::ostream& output_;
  const PushAnswering& answering_;
  std::map<std::size_t, std::string> waiting_;
  std::size_t written_ = 0;
  std::size_t answered_ = 0;
  PushAnswers result_;
  std::condition_variable room_;
};

Result<Dictionary> answerPush(const PushText& push, const PushAnswering& answering) {
  if (push.unreadable) return *push.unreadable;
  const auto parsed = parseJSON(push.text, answering.limits);
  if (!parsed) return parsed.error();
  const auto request = notificationRequestFromJSON(*parsed, push.naming);
  if (!request) return request.error();
  return answering.answer(*request);
}

}  // namespace

Dictionary answerToJSON(const AnsweredPush& answered) {
  if (answered.answer) return *answered.answer;
  const Dictionary answer{{"line", static_cast<std::int64_t>(answered.push.line)},
                          {"error", answered.answer.error().message}};
  return answered.push.source.empty() ? answer : answer.setting("file", answered.push.source);
}

PushLineSource::PushLineSource(std::istream& input, std::string name, std::size_t limit)
    : input_(input), name_(std::move(name)), limit_(limit) {}

std::optional<PushText> PushLineSource::next() {
  while (input_.good()) {
    PushText push = readLine();
    if (push.text.find_first_not_of(" \t\r") != std::string::npos || push.unreadable) return push;
  }
  return std::nullopt;
}

PushText PushLineSource::readLine() {
  PushText push{{}, ++line_, name_, std::nullopt};
  std::string ignored;
  while (takePart(push.unreadable ? ignored : push.text) == Taken::part) {
    ignored.clear();
    if (push.text.size() > limit_) {
      push.unreadable = Error{"a push of more than " + std::to_string(limit_ >> 20) + " MiB"};
    }
  }
  if (input_.bad()) push.unreadable = Error{"the input cannot be read"};
  return push;
}

PushLineSource::Taken PushLineSource::takePart(std::string& text) {
  input_.getline(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  const auto count = static_cast<std::size_t>(input_.gcount());
  if (input_.bad() || count == 0) return Taken::nothing;
  const bool wholeLine = !input_.fail() && !input_.eof();
  text.append(buffer_.data(), wholeLine ? count - 1 : count);
  if (wholeLine || input_.eof()) return Taken::line;
  input_.clear();
  return Taken::part;
}

PushAnswers answerPushes(PushSource& source, std::ostream& output, const PushAnswering& answering) {
  OrderedAnswers answers(source, output, answering);
  const auto work = [&] {
    while (const auto taken = answers.take()) {
      const auto& [position, push] = *taken;
      answers.put({push, position, answerPush(push, answering)});
    }
  };
  std::vector<std::thread> helpers;
  try {
    while (helpers.size() + 1 < answering.jobs) helpers.emplace_back(work);
  } catch (const std::system_error&) {
    // The threads there are do all the work.
  }
  work();
  for (std::thread& helper : helpers) helper.join();
  return answers.result();
}

}  // namespace QXPlatform
