#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace QXPlatform {

// A T for a static variable that threads may still use while the process exits: it is made, and never
// destroyed. Leak checkers find it, since it lies in the variable itself.
template <typename T>
class NeverDestroyed {
 public:
  template <typename... Arguments>
  explicit NeverDestroyed(Arguments&&... arguments) {
    new (storage_) T(std::forward<Arguments>(arguments)...);
  }
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;

  T& operator*() { return *std::launder(reinterpret_cast<T*>(storage_)); }
  const T& operator*() const { return *std::launder(reinterpret_cast<const T*>(storage_)); }
  T* operator->() { return &**this; }
  const T* operator->() const { return &**this; }

 private:
  alignas(T) std::byte storage_[sizeof(T)];
};

}  // namespace QXPlatform
