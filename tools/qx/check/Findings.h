#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qx {

struct Finding {
  enum class Severity { error, warning };

  Severity severity;
  std::string at;  // a JSON pointer into the userInfo
  std::string message;
  std::string hint;    // what to write instead; empty where that cannot be said
  std::string source;  // the same place as a pointer into the push as it was written

  bool isError() const { return severity == Severity::error; }
};

// What the checks of one push have found.
class Findings {
 public:
  // `root`: where in the push the userInfo stands.
  explicit Findings(std::string_view root) : root_(root) {}

  // What stands below /_rf was found in $_rf.
  void setInflated() { isInflated_ = true; }

  // What keeps a device from showing the push as it is meant.
  void error(std::string_view at, std::string message, std::string hint = {}) {
    add(Finding::Severity::error, at, std::move(message), std::move(hint));
  }
  // What is ignored or replaced, or keeps something else from working.
  void warn(std::string_view at, std::string message, std::string hint = {}) {
    add(Finding::Severity::warning, at, std::move(message), std::move(hint));
  }

  // The same of the frame around the userInfo, into which no place points; the message names it instead.
  void warnOfFrame(std::string_view place, std::string_view message, std::string hint = {});

  // Errors first, otherwise in the order of the checks.
  std::vector<Finding> sorted() &&;

 private:
  void add(Finding::Severity severity, std::string_view at, std::string message, std::string hint);

  const std::string_view root_;
  bool isInflated_ = false;
  std::vector<Finding> found_;
};

}  // namespace qx
