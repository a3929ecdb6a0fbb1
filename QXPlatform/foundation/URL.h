#pragma once

#include <optional>
#include <string>
#include <string_view>

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
  // In lower case, without brackets; empty when there is no authority.
  std::string host() const;
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

  friend bool operator==(const URL&, const URL&) = default;

 private:
  explicit URL(std::string text) : text_(std::move(text)) {}

  std::string text_;
};

}  // namespace QXPlatform
