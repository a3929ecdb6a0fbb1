// Acceptance, expiry and merge in whatever order the threads bring about: what is delivered has to be what
// some order of the processors, one after the other, gives. QX_SEED repeats a run, QX_RACE_RUNS sets how
// many.

#include <numeric>

#include "tests/QXExtensionSDK/runtime/ScriptedProcessors.h"

namespace QXExtensionSDK {
namespace {

using QXPlatform::Dictionary;
using QXPlatform::DispatchGroup;
using QXPlatform::DispatchQueue;

#ifdef QX_SANITIZED
constexpr unsigned long kRuns = 500;
#else
constexpr unsigned long kRuns = 10000;
#endif

unsigned long numberFrom(const char* variable, unsigned long otherwise) {
  const char* text = getenv(variable);
  return text == nullptr ? otherwise : std::strtoul(text, nullptr, 10);
}

// When a processor completes: while it runs, on some thread, or when all the others are through.
enum class When { atOnce, elsewhere, late };

struct Plan {
  std::vector<When> calls;  // none, one or two
  bool changesSomething = true;
};

struct Run {
  std::vector<Plan> processors;
  std::size_t expiries = 0;

  std::size_t calls() const {
    std::size_t calls = 0;
    for (const Plan& plan : processors) calls += plan.calls.size();
    return calls;
  }
  bool merges() const {
    return std::ranges::none_of(processors, [](const Plan& plan) { return plan.calls.empty(); });
  }
};

Run randomRun(std::mt19937& random) {
  const auto below = [&](unsigned end) { return static_cast<unsigned>(random() % end); };
  Run run{std::vector<Plan>(1 + below(4)), below(3)};
  for (Plan& plan : run.processors) {
    plan.changesSomething = below(5) != 0;
    for (unsigned calls = (below(6) + 2) / 3; calls > 0; --calls) {
      plan.calls.push_back(static_cast<When>(below(3)));
    }
  }
  return run;
}

// Tells of the call, and fights with each other processor for a key, so that the outcome gives away the
// order.
UserInfoChanges changesOf(const Run& run, std::size_t index, std::size_t call) {
  if (!run.processors[index].changesSomething) return std::nullopt;
  std::vector<std::pair<std::string, QXPlatform::Value>> changes{
      {"call of " + std::to_string(index), static_cast<std::int64_t>(call)}};
  for (std::size_t other = 0; other < run.processors.size(); ++other) {
    const auto [first, second] = std::minmax(index, other);
    changes.emplace_back(std::to_string(first) + " or " + std::to_string(second),
                         static_cast<std::int64_t>(index));
  }
  return Dictionary::fromEntries(changes);
}

// Whether the call can have been accepted: not after one that the same thread made earlier.
bool canCome(const Plan& plan, std::size_t call) {
  if (call == 0) return plan.calls.size() == 1 || plan.calls[0] != When::late || plan.calls[1] == When::late;
  return plan.calls[0] != When::atOnce && (plan.calls[0] == When::late) >= (plan.calls[1] == When::late) &&
         !(plan.calls[0] == When::late && plan.calls[1] == When::late);
}

// The sequential model: one processor after the other, in some order, each with one of its calls.
bool isOutcomeOfSomeOrder(const Run& run, const Dictionary& payload, const Dictionary& outcome) {
  std::vector<std::size_t> order(run.processors.size());
  std::iota(order.begin(), order.end(), 0U);
  do {
    Dictionary model = payload;
    for (const std::size_t index : order) {
      const auto call = outcome["call of " + std::to_string(index)].integer().value_or(0);
      if (!canCome(run.processors[index], static_cast<std::size_t>(call)) &&
          run.processors[index].changesSomething) {
        return false;
      }
      model = model.merging(changesOf(run, index, static_cast<std::size_t>(call)).value_or(Dictionary()));
    }
    if (model == outcome) return true;
  } while (std::ranges::next_permutation(order).found);
  return false;
}

// One run, with threads of its own.
class Race {
 public:
  explicit Race(Run run) : run_(std::move(run)) {}

  // Starts, expires and completes; afterwards nothing is left of the worker.
  void play() {
    std::vector<ScriptedProcessor::Script> scripts;
    for (std::size_t index = 0; index < run_.processors.size(); ++index) {
      scripts.push_back(script(index));
      inFlight_.enter();
    }
    auto worker =
        NotificationServiceWorker::make(std::shared_ptr<ClientCalling>(service_, service_.get()),
                                        std::make_unique<const ScriptedProvider>(std::move(scripts)));
    const std::weak_ptr<NotificationServiceWorker> watched = worker;
    worker->workerDidReceive(makeRequest(payload_), deliveries_.handler());
    for (std::size_t count = 0; count < run_.expiries; ++count)
      worker->workerServiceExtensionTimeWillExpire();
    worker.reset();
    ASSERT_TRUE(inFlight_.wait(support::soon()));
    for (std::size_t index = 0; index < late_.count(); ++index) late_.at(index)();
    late_ = {};
    ASSERT_TRUE(support::eventually([&] { return watched.expired(); }));
  }

  // Before the merge the payload's userInfo, from then on what the processors made of it.
  void check() const {
    ASSERT_EQ(deliveries_.count(), run_.expiries + (run_.merges() ? 1 : 0));
    const Dictionary last =
        deliveries_.count() == 0 ? payload_ : deliveries_.at(deliveries_.count() - 1).userInfo;
    EXPECT_TRUE(run_.merges() ? isOutcomeOfSomeOrder(run_, payload_, last) : last == payload_)
        << last.description();
    bool merged = false;
    for (std::size_t index = 0; index < deliveries_.count(); ++index) {
      const Dictionary userInfo = deliveries_.at(index).userInfo;
      merged = merged || userInfo != payload_;
      EXPECT_EQ(userInfo, merged ? last : payload_);
    }
    const auto refused = std::ranges::count_if(log_->messages(), [](const std::string& message) {
      return message.starts_with("Multiple completion") || message.starts_with("self reference is nil");
    });
    const auto once =
        std::ranges::count_if(run_.processors, [](const Plan& plan) { return !plan.calls.empty(); });
    // A worker that can never merge may be gone before a first completion comes.
    EXPECT_GE(static_cast<std::size_t>(refused + once), run_.calls());
    if (run_.merges()) {
      EXPECT_EQ(static_cast<std::size_t>(refused + once), run_.calls());
    }
  }

 private:
  ScriptedProcessor::Script script(std::size_t index) {
    return [this, index](auto&, const ProcessingCompletion& complete) {
      const Plan& plan = run_.processors[index];
      for (std::size_t call = 0; call < plan.calls.size(); ++call) {
        const auto work = [complete, changes = changesOf(run_, index, call)] { complete(changes); };
        if (plan.calls[call] == When::atOnce) work();
        if (plan.calls[call] == When::elsewhere) elsewhere_.async(inFlight_, work);
        if (plan.calls[call] == When::late) late_.put(work);
      }
      inFlight_.leave();
    };
  }

  const Run run_;
  const std::shared_ptr<TestService> service_ = std::make_shared<TestService>();
  const Dictionary payload_{{"0 or 0", "payload"}, {"other", "stays"}};
  const DispatchQueue elsewhere_{"elsewhere", DispatchQueue::Attribute::concurrent};
  const DispatchGroup inFlight_;
  support::Mailbox<std::function<void()>> late_;
  Deliveries deliveries_;
  support::ScopedLogRecorder log_;
};

TEST(NotificationServiceWorkerRaceTest, DeliversWhatSomeOrderOfTheProcessorsGives) {
  const unsigned long seed = numberFrom("QX_SEED", std::random_device{}());
  const unsigned long runs = numberFrom("QX_RACE_RUNS", kRuns);
  std::printf("QX_SEED=%lu\n", seed);
  std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
  for (unsigned long count = 0; count < runs && !testing::Test::HasFailure(); ++count) {
    SCOPED_TRACE("run " + std::to_string(count));
    Race race(randomRun(random));
    race.play();
    if (!testing::Test::HasFailure()) race.check();
  }
}

}  // namespace
}  // namespace QXExtensionSDK
