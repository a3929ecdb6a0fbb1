#include "tools/qx/EachPush.h"

#include <condition_variable>
#include <exception>
#include <iostream>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "QXPlatform/foundation/MemoryUse.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

// What a thread takes at a time: enough that the taking does not count, and little to hold.
constexpr std::size_t kMostPushesABatch = 32;
constexpr std::size_t kMostBytesABatch = std::size_t{256} * 1024;
// With more of them behind, a thread waits for its turn to report.
constexpr std::size_t kMostBatchesBehind = 4;

// On a terminal, too, what comes before it is seen before.
void failInTurn(std::string_view command, const std::string& reason) {
  std::cout.flush();
  fail(command, reason);
}

bool print(const std::string& line) {
  std::cout << line;
  return true;
}

// A file that cannot be opened is named in the reason already.
std::string withPlace(const PushPlace& place, const Error& error) {
  return error.message.starts_with(place.file + ": ") ? error.message : place.name + ": " + error.message;
}

// Has several threads go through the pushes, each of them from batch to batch: it reads one, looks at it, and
// reports on it when its turn has come, or else after a later one. So a thread that the system holds up does
// not hold up the others, and each lets go of what it has taken itself: threads that free each other's memory
// meet at the allocator's locks. A single job goes from push to push.
class Examination {
 public:
  Examination(std::string_view command, const PushInput& input,
              const std::function<PushReport(const std::string&, const PushPlace&)>& examine,
              const std::function<void(const PushPlace&, const Error&)>& unreadable)
      : command_(command),
        jobs_(input.jobs),
        examine_(examine),
        unreadable_(unreadable),
        pushes_(input.files) {}

  // The exit code.
  int run() {
    work([this] { startAnother(); });
    others_.clear();
    if (failure_) std::rethrow_exception(failure_);
    return exitCode_;
  }

 private:
  struct Batch {
    std::size_t position = 0;
    std::vector<PlacedPush> pushes;
    std::vector<PushReport> reports;
  };

  void work(const std::function<void()>& whenTaken) {
    try {
      std::list<Batch> examined;  // and not reported on
      while (takeNext(examined)) {
        whenTaken();
        auto& [position, pushes, reports] = examined.back();
        for (const PlacedPush& each : pushes) reports.push_back(examine(each));
        if (!report(examined, kMostBatchesBehind)) return;
      }
      report(examined, 0);
    } catch (...) {
      end(std::current_exception());
    }
  }

  // Unless the system gives no more.
  void startAnother() {
    if (others_.size() + 1 == jobs_) return;
    try {
      others_.emplace_back([this] { work([] {}); });
    } catch (const std::system_error&) {
    }
  }

  // Returns whether there was one.
  bool takeNext(std::list<Batch>& batches) {
    const std::size_t most = jobs_ == 1 ? 1 : kMostPushesABatch;
    Batch batch;
    const std::lock_guard lock(inputMutex_);
    for (std::size_t bytes = 0; batch.pushes.size() < most && bytes <= kMostBytesABatch;) {
      auto push = pushes_.next();
      if (!push) break;
      bytes += push->push.text.size();
      batch.pushes.push_back(*std::move(push));
    }
    if (batch.pushes.empty()) return false;
    batch.position = taken_++;
    batches.push_back(std::move(batch));
    return true;
  }

  PushReport examine(const PlacedPush& each) const {
    if (!each.push.unreadable) return examine_(each.push.text, each.place);
    return [this, &each] {
      failInTurn(command_, withPlace(each.place, *each.push.unreadable));
      if (unreadable_) unreadable_(each.place, *each.push.unreadable);
      return false;
    };
  }

  // As far as it is their turn, for which it waits while they are more than so many. Returns whether to go
  // on.
  bool report(std::list<Batch>& examined, std::size_t mostLeft) {
    std::unique_lock lock(outputMutex_);
    const auto isTurn = [&] { return isOver_ || examined.front().position == reported_; };
    while (!isOver_ && !examined.empty()) {
      if (examined.size() > mostLeft) changed_.wait(lock, isTurn);
      if (isOver_ || !isTurn()) break;
      lock.unlock();
      const bool isGood = reportOn(examined.front());
      examined.pop_front();
      lock.lock();
      if (!isGood) exitCode_ = 1;
      ++reported_;
      isOver_ = isOver_ || !std::cout;
      changed_.notify_all();
    }
    return !isOver_;
  }

  static bool reportOn(const Batch& batch) {
    bool isGood = true;
    for (const PushReport& report : batch.reports) isGood = report() && isGood;
    std::cout.flush();
    return isGood;
  }

  void end(std::exception_ptr failure) {
    const std::lock_guard lock(outputMutex_);
    failure_ = std::move(failure);
    isOver_ = true;
    changed_.notify_all();
  }

  const std::string_view command_;
  const std::size_t jobs_;
  const std::function<PushReport(const std::string&, const PushPlace&)>& examine_;
  const std::function<void(const PushPlace&, const Error&)>& unreadable_;

  std::mutex inputMutex_;
  // Below, guarded by inputMutex_.
  PlacedPushes pushes_;
  std::size_t taken_ = 0;

  std::mutex outputMutex_;
  std::condition_variable changed_;
  // Below, guarded by outputMutex_. Standard output belongs to who reports on the next one.
  std::size_t reported_ = 0;
  bool isOver_ = false;
  std::exception_ptr failure_;
  int exitCode_ = 0;

  std::vector<std::jthread> others_;
};

}  // namespace

int forEachPush(std::string_view command, const PushInput& input,
                const std::function<PushReport(const std::string& text, const PushPlace& place)>& examine,
                const std::function<void(const PushPlace& place, const Error& reason)>& unreadable) {
  QXPlatform::keepMemoryUseEven(static_cast<int>(input.jobs));
  return Examination(command, input, examine, unreadable).run();
}

int printEachChanged(const SimulatorOptions& simulator, std::string_view command, const PushInput& input,
                     const std::function<Result<Dictionary>(const Dictionary&)>& change,
                     const std::function<void(const PushPlace& place, const Dictionary& before,
                                              const Dictionary& after)>& report) {
  return forEachPush(command, input, [&](const std::string& text, const PushPlace& place) -> PushReport {
    const auto failed = [&](const Error& error) {
      return [=, message = withPlace(place, error)] {
        failInTurn(command, message);
        return false;
      };
    };
    const auto push = PushDocument::parse(text);
    if (!push) return failed(push.error());
    const auto userInfo = change(push->userInfo());
    if (!userInfo) return failed(userInfo.error());
    std::string line = resultText(simulator, push->replacingUserInfo(*userInfo));
    // What nobody asks for is let go here, where it was made.
    if (!report) return [line = std::move(line)] { return print(line); };
    return [&, place, before = push->userInfo(), after = *userInfo, line = std::move(line)] {
      print(line);
      report(place, before, after);
      return true;
    };
  });
}

}  // namespace qx
