#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>

namespace support {

// Sets an environment variable, or takes it out, for as long as this lives. Not while other threads look.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* previous = getenv(name_.c_str())) previous_ = previous;
    assign(value);
  }
  ~ScopedEnvironment() { assign(previous_); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  void assign(const std::optional<std::string>& value) const {
    if (value) {
      setenv(name_.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }

  std::string name_;
  std::optional<std::string> previous_;
};

}  // namespace support
