#include "agent/extensions/ServiceExtension.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <chrono>
#include <deque>
#include <fstream>
#include <utility>

#include "QXPlatform/log/StandardError.h"
#include "agent/extensions/ExtensionProcess.h"

namespace QXAgent {

namespace {

using QXPlatform::Dictionary;
using SteadyClock = std::chrono::steady_clock;

// An extension keeps to 30 seconds itself; one that does not is broken.
constexpr std::chrono::seconds kTimeLimit{31};
constexpr std::chrono::seconds kKeptIdle{30};
// A receipt may take 22 seconds after its push has been shown.
constexpr std::chrono::seconds kLongestExit{35};
constexpr std::chrono::seconds kMemoryLook{1};
// One that is ended is gone at once, unless the kill has not reached it.
constexpr std::chrono::seconds kLongestKill{3};

std::size_t residentMemory(int process) {
  std::ifstream statm("/proc/" + std::to_string(process) + "/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  statm >> size >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

const std::size_t kExtensionMemory = std::size_t{QX_EXTENSION_MEMORY_MB} << 20;

// One program, from its start to its exit.
class ServiceExtension::Run {
 public:
  Run(EventLoop& loop, StartedProgram started, std::function<void()> ended)
      : loop_(loop),
        process_(std::move(started),
                 [](std::string_view line) {
                   QXPlatform::writeToStandardError(std::string("extension: ").append(line) + "\n");
                 }),
        ended_(std::move(ended)),
        watch_(loop, process_.descriptor(), EPOLLIN, [this] { handleEvents(); }),
        limit_(loop, [this] { endLate(); }),
        patience_(loop, [this] { losePatience(); }),
        memory_(loop, [this] { checkMemory(); }),
        killed_(loop, [this] { abandon(); }) {
    if (process_.program().processId() > 0) memory_.start(kMemoryLook);
  }
  // One that is not gone with the kill is not waited for here.
  ~Run() {
    Program& program = process_.program();
    if (program.processId() <= 0 || program.exitStatus()) return;
    program.kill();
    program.release();
    loop_.reap(program.processId());
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  // One that is being ended is still there for a while.
  bool takesRequests() const { return !retired_ && !process_.hasEnded() && !process_.endReason(); }
  // What it has in hand, receipts among it, it may bring to an end.
  void retire() {
    if (std::exchange(retired_, true)) return;
    process_.closeInput();
    patience_.start(kLongestExit);
  }
  // A program whose output has ended answers no more, and may be killed.
  bool hasEnded() const { return process_.hasEnded(); }

  void ask(const Dictionary& request, Completion completion) {
    patience_.stop();
    const std::string identifier(request["identifier"].string().value_or(""));
    deadlines_.push_back({SteadyClock::now() + kTimeLimit, identifier});
    if (!limit_.isRunning()) limit_.start(kTimeLimit);
    process_.ask(request, [this, identifier,
                           completion = std::move(completion)](ExtensionProcess::Answer answer) {
      std::erase_if(deadlines_, [&](const Deadline& deadline) { return deadline.identifier == identifier; });
      completion(outcomeOf(identifier, std::move(answer)));
    });
  }

 private:
  struct Deadline {
    SteadyClock::time_point at;
    std::string identifier;
  };

  Outcome outcomeOf(const std::string& identifier, ExtensionProcess::Answer answer) const {
    if (answer) return {End::answered, *std::move(answer), {}};
    const End end = !process_.hasEnded() ? End::refused : identifier == late_ ? End::late : End::died;
    return {end, {}, answer.error().message};
  }

  void handleEvents() {
    process_.handleEvents();
    if (process_.hasEnded()) return finish();
    if (process_.inHand() == 0 && !retired_ && !patience_.isRunning()) patience_.start(kKeptIdle);
  }

  void finish() {
    for (Timer* timer : {&limit_, &patience_, &memory_, &killed_}) timer->stop();
    watch_.setEnabled(false);
    ended_();
  }

  void end(std::string reason) {
    process_.end(std::move(reason));
    if (!killed_.isRunning()) killed_.start(kLongestKill);
  }

  void abandon() {
    process_.abandon();
    finish();
  }

  void endLate() {
    if (deadlines_.empty()) return;
    const auto left = deadlines_.front().at - SteadyClock::now();
    if (left > SteadyClock::duration::zero())
      return limit_.start(std::chrono::ceil<std::chrono::microseconds>(left));
    late_ = deadlines_.front().identifier;
    end("the extension has not answered within its time");
  }

  void losePatience() {
    if (retired_) return end("the extension did not exit after its input had ended");
    retire();
  }

  void checkMemory() {
    const std::size_t held = residentMemory(process_.program().processId());
    if (held > kExtensionMemory) {
      end("the extension holds " + std::to_string(held >> 20) + " MB");
    } else {
      memory_.start(kMemoryLook);
    }
  }

  EventLoop& loop_;
  ExtensionProcess process_;
  const std::function<void()> ended_;
  std::deque<Deadline> deadlines_;  // soonest first
  std::string late_;
  bool retired_ = false;
  Watch watch_;
  Timer limit_;
  Timer patience_;
  Timer memory_;
  Timer killed_;
};

ServiceExtension::ServiceExtension(EventLoop& loop, Starter start, std::function<void()> ended)
    : loop_(loop),
      start_(std::move(start)),
      ended_(std::move(ended)),
      sweep_(loop, [this] { removeEnded(); }) {}

ServiceExtension::~ServiceExtension() = default;

void ServiceExtension::ask(const Dictionary& request, Completion completion) {
  if (runs_.empty() || !runs_.back()->takesRequests()) {
    auto started = start_();
    if (!started) return completion({End::refused, {}, started.error().message});
    // Not from within the run's own events.
    const auto ended = [this] { sweep_.start(std::chrono::microseconds(0)); };
    runs_.push_back(std::make_unique<Run>(loop_, *std::move(started), ended));
  }
  runs_.back()->ask(request, std::move(completion));
}

void ServiceExtension::removeEnded() {
  runs_.remove_if([](const auto& run) { return run->hasEnded(); });
  if (runs_.empty()) ended_();
}

void ServiceExtension::retire() {
  for (const auto& run : runs_) run->retire();
}

}  // namespace QXAgent
