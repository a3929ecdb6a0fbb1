#include <benchmark/benchmark.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "QXPlatform/dispatch/DispatchGroup.h"

namespace {

// To a queue and back to the waiting caller: two hand-offs between threads.
void BM_AsyncRoundTrip(benchmark::State& state) {
  const QXPlatform::DispatchQueue queue("bench.concurrentQueue",
                                        QXPlatform::DispatchQueue::Attribute::concurrent);
  const QXPlatform::DispatchGroup group;
  for (auto _ : state) {
    queue.async(group, [] {});
    group.wait(QXPlatform::Clock::TimePoint::max());
  }
}
BENCHMARK(BM_AsyncRoundTrip)->UseRealTime();

void BM_SyncOnIdleSerialQueue(benchmark::State& state) {
  const QXPlatform::DispatchQueue queue("bench.serialQueue", QXPlatform::DispatchQueue::Attribute::serial);
  for (auto _ : state) queue.sync([] {});
}
BENCHMARK(BM_SyncOnIdleSerialQueue)->UseRealTime();

// The same two hand-offs with nothing but a condition variable between two threads.
void BM_FloorThreadHandOff(benchmark::State& state) {
  std::mutex mutex;
  std::condition_variable changed;
  enum class Turn { caller, other, over } turn = Turn::caller;
  std::thread other([&] {
    std::unique_lock lock(mutex);
    while (turn != Turn::over) {
      if (turn == Turn::other) {
        turn = Turn::caller;
        changed.notify_one();
      }
      changed.wait(lock, [&] { return turn != Turn::caller; });
    }
  });
  for (auto _ : state) {
    std::unique_lock lock(mutex);
    turn = Turn::other;
    changed.notify_one();
    changed.wait(lock, [&] { return turn == Turn::caller; });
  }
  {
    const std::lock_guard lock(mutex);
    turn = Turn::over;
  }
  changed.notify_one();
  other.join();
}
BENCHMARK(BM_FloorThreadHandOff)->UseRealTime();

}  // namespace
