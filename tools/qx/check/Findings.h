#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qx {

struct Finding {
  enum class Severity { error, warning };

  Severity severity;
  std::string at;  // a JSON pointer into the push
  std::string message;
};

// What the checks of one push have found.
class Findings {
 public:
  // `root`: where in the push the userInfo stands, from which the places below count.
  explicit Findings(std::string_view root) : root_(root) {}

  // What loses the rich features.
  void error(std::string_view at, std::string message) {
    add(Finding::Severity::error, at, std::move(message));
  }
  // What is ignored or replaced, or keeps something from working.
  void warn(std::string_view at, std::string message) {
    add(Finding::Severity::warning, at, std::move(message));
  }

  // Errors first, otherwise in the order of the checks.
  std::vector<Finding> sorted() &&;

 private:
  void add(Finding::Severity severity, std::string_view at, std::string message) {
    found_.push_back({severity, std::string(root_).append(at), std::move(message)});
  }

  const std::string_view root_;
  std::vector<Finding> found_;
};

}  // namespace qx
