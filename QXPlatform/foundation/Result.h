#pragma once

#include <string>
#include <utility>
#include <variant>

namespace QXPlatform {

// Why an operation failed, in words fit for a log line. Never holds a token or payload text.
struct Error {
  std::string message;

  const std::string& description() const { return message; }
};

// A value or the reason why there is none.
template <typename T, typename E = Error>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  Result(E error) : state_(std::in_place_index<1>, std::move(error)) {}

  bool ok() const { return state_.index() == 0; }
  explicit operator bool() const { return ok(); }

  // REQUIRES: ok()
  const T& value() const& { return std::get<0>(state_); }
  T& value() & { return std::get<0>(state_); }
  T&& value() && { return std::get<0>(std::move(state_)); }
  const T& operator*() const& { return value(); }
  T&& operator*() && { return std::move(*this).value(); }
  const T* operator->() const { return &value(); }

  // REQUIRES: !ok()
  const E& error() const { return std::get<1>(state_); }

 private:
  std::variant<T, E> state_;
};

}  // namespace QXPlatform
