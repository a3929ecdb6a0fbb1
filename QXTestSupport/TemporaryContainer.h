#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace QXTestSupport {

// A host's bundle with an Info.plist and an empty shared container, for as long as this lives; then both go.
// Make it first: a process reads its bundle once, so every test of a program has to name the same group. Not
// while other threads look at the environment. Throws std::runtime_error when there is no room for it.
class TemporaryContainer {
 public:
  explicit TemporaryContainer(const std::string& group = "group.com.example.host");
  ~TemporaryContainer();
  TemporaryContainer(const TemporaryContainer&) = delete;
  TemporaryContainer& operator=(const TemporaryContainer&) = delete;

  // The container's directory, where the stores of AppGroupSDK keep their files.
  std::string path() const;
  // What one of these files holds; empty when there is no such file.
  std::string read(std::string_view file) const;

 private:
  class State;

  std::unique_ptr<State> state_;
};

}  // namespace QXTestSupport
