#include "QXPlatform/notifications/PushLines.h"

#include <atomic>
#include <condition_variable>
#include <istream>
#include <map>
#include <mutex>
#include <new>
#include <ostream>
#include <utility>
#include <vector>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/dispatch/BriefLock.h"
#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/foundation/JSONText.h"
#include "QXPlatform/foundation/MemoryUse.h"
#include "QXPlatform/notifications/NotificationJSON.h"

namespace QXPlatform {

namespace {

// When more answers a job, and more text in all, wait for an earlier one, no more pushes are taken.
constexpr std::size_t kMostWaitingPerJob = 4;
constexpr std::size_t kMostWaitingBytes = std::size_t{1} << 20;
// Of how many answers one is followed by giving back the memory that has come free.
constexpr std::size_t kAnswersToGiveBack = 1000;
constexpr std::size_t kLargestSpare = std::size_t{1} << 16;

void appendCompactLine(std::string& text, const AnsweredPush& answered) {
  appendJSONOrDescription(text, answerToJSON(answered), JSONStyle::compact);
  text += '\n';
}

struct TakenPush {
  std::size_t position = 0;
  PushText text{};
  std::string answer{};                    // room for it, empty
  std::atomic<bool> oneIsThrough = false;  // the call that answers it, or the answer
};

// Lets several threads take from one source and, if asked to, puts their answers back into its order.
class OrderedAnswers {
 public:
  OrderedAnswers(PushSource& source, std::ostream& output, const PushAnswering& answering)
      : source_(source), output_(output), answering_(answering) {
    spareNodes_.reserve(kMostWaitingPerJob * answering_.jobs);
  }

  // Nothing at the end.
  std::shared_ptr<TakenPush> take() {
    auto taken = std::make_shared<TakenPush>();
    const auto lock = lockBriefly(sourceMutex_);
    auto room = waitForRoom();
    if (!room) return nullptr;
    auto push = source_.next();
    if (!push) return nullptr;
    taken->position = taken_++;
    taken->text = *std::move(push);
    taken->answer = *std::move(room);
    return taken;
  }

  // Whoever comes while another thread writes leaves it the answer.
  void put(TakenPush& push, const Result<Dictionary>& answer) {
    const AnsweredPush answered{push.text, push.position, answer};
    answering_.present ? answering_.present(push.answer, answered) : appendCompactLine(push.answer, answered);
    auto lock = lockBriefly(outputMutex_);
    if (!answer) ++result_.errors;
    waitingBytes_ += push.answer.size();
    keep(answering_.inOrder ? push.position : arrived_++, std::move(push.answer));
    if (isWriting_) return;
    isWriting_ = true;
    while (!waiting_.empty() && waiting_.begin()->first == written_) writeNext(lock);
    isWriting_ = false;
  }

  // No more pushes are taken: an answer was lost for want of memory.
  void giveUp() {
    const std::lock_guard lock(outputMutex_);
    outOfMemory_ = true;
    room_.notify_all();
  }

  PushAnswers result() const {
    if (outOfMemory_) throw std::bad_alloc();
    return result_;
  }

 private:
  using Answers = std::map<std::size_t, std::string>;

  // Returns room for another answer, none after the output has failed.
  std::optional<std::string> waitForRoom() {
    auto lock = lockBriefly(outputMutex_);
    const std::size_t most = kMostWaitingPerJob * answering_.jobs;
    const auto isOver = [&] { return result_.outputFailed || outOfMemory_; };
    room_.wait(lock, [&] { return isOver() || waiting_.size() < most || waitingBytes_ < kMostWaitingBytes; });
    if (isOver()) return std::nullopt;
    if (spare_.empty()) return std::string();
    std::string room = std::move(spare_.back());
    spare_.pop_back();
    return room;
  }

  void keep(std::size_t position, std::string text) {
    if (spareNodes_.empty()) {
      waiting_.emplace(position, std::move(text));
      return;
    }
    Answers::node_type node = std::move(spareNodes_.back());
    spareNodes_.pop_back();
    node.key() = position;
    node.mapped() = std::move(text);
    waiting_.insert(std::move(node));
  }

  std::string takeFirst() {
    Answers::node_type node = waiting_.extract(waiting_.begin());
    std::string text = std::move(node.mapped());
    if (spareNodes_.size() < spareNodes_.capacity()) spareNodes_.push_back(std::move(node));
    return text;
  }

  void writeNext(std::unique_lock<std::mutex>& lock) {
    std::string text = takeFirst();
    lock.unlock();
    // In one piece, so that what a host prints comes between the lines.
    output_ << text << std::flush;
    const std::size_t answered = ++written_;
    if (answered % kAnswersToGiveBack == 0) giveBackFreeMemory();
    if (answering_.progress) answering_.progress(answered);
    lock = lockBriefly(outputMutex_);
    waitingBytes_ -= text.size();
    if (!output_) result_.outputFailed = true;
    if (text.capacity() <= kLargestSpare && spare_.size() < kMostWaitingPerJob * answering_.jobs) {
      text.clear();
      spare_.push_back(std::move(text));
    }
    room_.notify_all();
  }

  std::mutex sourceMutex_;
  PushSource& source_;
  std::size_t taken_ = 0;

  std::mutex outputMutex_;
  std::ostream& output_;
  const PushAnswering& answering_;
  Answers waiting_;
  std::size_t waitingBytes_ = 0;
  std::size_t arrived_ = 0;
  bool isWriting_ = false;
  std::size_t written_ = 0;  // changed by who writes
  // The room of answers that have been written, for others: threads that free each other's memory meet at the
  // allocator's locks, and get blocks that lie in the other one's cache.
  std::vector<std::string> spare_;
  std::vector<Answers::node_type> spareNodes_;
  PushAnswers result_;
  bool outOfMemory_ = false;
  std::condition_variable room_;
};

// Has pushes answered, so many at a time: each job goes from push to push, on the thread that brought the
// last answer if that runs work items. Another one, such as that which keeps time, is not to wait for input;
// then the caller's thread goes on.
class AnsweringJobs {
 public:
  AnsweringJobs(PushSource& source, std::ostream& output, const PushAnswering& answering)
      : answering_(answering), answers_(source, output, answering), running_(answering.jobs) {}

  PushAnswers run() {
    for (std::size_t i = 1; i < answering_.jobs; ++i) queue_.async([this] { goOn(); });
    goOn();
    while (isHandedBack()) goOn();
    return answers_.result();
  }

 private:
  void goOn() {
    try {
      while (const auto taken = answers_.take()) {
        if (!isAnsweredAtOnce(taken)) return;
      }
    } catch (const std::bad_alloc&) {
      answers_.giveUp();
    }
    const std::lock_guard lock(mutex_);
    if (--running_ == 0) changed_.notify_one();
  }

  // Waits for a job that is handed back, or for the end of all.
  bool isHandedBack() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return running_ == 0 || handedBack_ > 0; });
    if (handedBack_ == 0) return false;
    --handedBack_;
    return true;
  }

  void goOnAfterAnswer() {
    if (CurrentActivityScope::exists()) return goOn();
    const std::lock_guard lock(mutex_);
    ++handedBack_;
    changed_.notify_one();
  }

  // Whoever is the last to be through, the call or the answer, goes on with the job.
  bool isAnsweredAtOnce(const std::shared_ptr<TakenPush>& push) {
    answer(push->text, [this, push](const Result<Dictionary>& answer) {
      try {
        answers_.put(*push, answer);
      } catch (const std::bad_alloc&) {
        answers_.giveUp();
      }
      if (push->oneIsThrough.exchange(true)) goOnAfterAnswer();
    });
    return push->oneIsThrough.exchange(true);
  }

  void answer(const PushText& push, PushCompletion completion) const {
    if (push.unreadable) return completion(*push.unreadable);
    const auto parsed = parseJSON(push.text, answering_.limits);
    if (!parsed) return completion(parsed.error());
    const auto request = notificationRequestFromJSON(*parsed, push.naming);
    if (!request) return completion(request.error());
    answering_.answer(*request, std::move(completion));
  }

  const PushAnswering& answering_;
  OrderedAnswers answers_;
  const DispatchQueue queue_{"push.answers", DispatchQueue::Attribute::concurrent};
  std::mutex mutex_;
  std::condition_variable changed_;
  // Below, guarded by mutex_.
  std::size_t running_;
  std::size_t handedBack_ = 0;
};

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
  return AnsweringJobs(source, output, answering).run();
}

}  // namespace QXPlatform
