#pragma once

#include "tests/support/Test.h"

namespace support {

// Keeps what other threads put in, to be waited for. Copies share one box, so that a late completion always
// finds it.
template <typename Item>
class Mailbox {
 public:
  void put(Item item) const {
    const std::lock_guard lock(state_->mutex);
    state_->items.push_back(std::move(item));
    state_->changed.notify_all();
  }
  // Blocks until so many have come; returns whether they have.
  bool waitFor(std::size_t count) const {
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_until(lock, soon(), [&] { return state_->items.size() >= count; });
  }
  std::size_t count() const {
    const std::lock_guard lock(state_->mutex);
    return state_->items.size();
  }
  Item at(std::size_t index) const {
    const std::lock_guard lock(state_->mutex);
    return state_->items.at(index);
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Item> items;
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace support
