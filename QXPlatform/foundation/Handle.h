#pragma once

#include <memory>

namespace QXPlatform {

template <auto release>
struct Releaser {
  template <typename T>
  void operator()(T* handle) const {
    release(handle);
  }
};

// Owns what a C library has handed out, until `release`, the library's own function, takes it back.
template <typename T, auto release>
using Handle = std::unique_ptr<T, Releaser<release>>;

}  // namespace QXPlatform
