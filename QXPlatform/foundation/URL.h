#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace QXPlatform {

// An RFC 3986 URI reference that is known to be well formed. Immutable; any thread.
class URL {
 public:
  // Nothing for an empty or malformed text. Any scheme, or none, is accepted.
  static std::optional<URL> parse(std::string_view text);
  // What a URL cannot hold is percent-encoded. REQUIRES: the path begins with a slash.
  static URL file(std::string_view absolutePath);

  const std::string& absoluteString() const { return text_; }
  // Fit for a log line: without user, password, query and fragment, any of which may carry a secret.
  std::string withoutSecrets() const;
  // In lower case; empty when the reference has none.
  std::string scheme() const;
  // As written; empty when there is none. Lives as long as this URL.
  std::string_view userInfo() const;
  // In lower case, without brackets; empty when there is no authority.
  std::string host() const;
  // As written; empty when there is none.
  std::string port() const;
  // Percent-encoded, as written.
  std::string path() const;
  // The last path segment, percent-decoded; a trailing slash does not count. Empty for an empty path.
  std::string lastPathComponent() const;
  bool isFileURL() const { return scheme() == "file"; }
  // The decoded path of a file URL. REQUIRES: isFileURL()
  std::string filePath() const;
  // With one slash between this URL's path and the component, whatever slashes either brings along.
  // The component is percent-encoded where needed; its own slashes stay separators.
  URL appendingPathComponent(std::string_view component) const;

  friend bool operator==(const URL& left, const URL& right) { return left.text_ == right.text_; }

 private:
  // Where a component stands in the text.
  struct Range {
    std::size_t start = 0;
    std::size_t length = 0;
  };
  struct Components {
    Range scheme;
    Range credentials;  // with the "@" behind them
    Range host;
    Range port;
    Range path;
  };
  class Reading;
  URL(std::string text, const Components& components) : text_(std::move(text)), components_(components) {}
  std::string_view at(const Range& range) const {
    return std::string_view(text_).substr(range.start, range.length);
  }

  std::string text_;
  Components components_;
};

}  // namespace QXPlatform
