#include "QXPlatform/foundation/URL.h"

#include <uriparser/Uri.h>

#include <algorithm>
#include <array>
#include <new>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/FatalError.h"

namespace QXPlatform {

namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
  return path.substr(0, path.find_last_not_of('/') + 1);
}

std::string percentDecoded(std::string_view text) {
  std::string decoded(text);
  if (text.find('%') == std::string_view::npos) return decoded;
  const char* end = uriUnescapeInPlaceExA(decoded.data(), URI_FALSE, URI_BR_DONT_TOUCH);
  decoded.resize(static_cast<std::size_t>(end - decoded.data()));
  return decoded;
}

constexpr auto makePathCharacters() {
  std::array<bool, 256> may{};
  constexpr std::string_view kOthers = "/-._~!$&'()*+,;=:@";
  for (std::size_t code = 0; code < may.size(); ++code) {
    const char character = static_cast<char>(code);
    may[code] = isASCIIAlphanumeric(character) || kOthers.find(character) != std::string_view::npos;
  }
  return may;
}

// What a path may hold as it is.
bool isPathCharacter(char character) {
  static constexpr auto kMay = makePathCharacters();
  return kMay[static_cast<unsigned char>(character)];
}

void appendPercentEncoded(std::string& out, std::string_view path) {
  if (std::ranges::all_of(path, isPathCharacter)) {
    out += path;
    return;
  }
  for (const char character : path) {
    if (isPathCharacter(character)) {
      out += character;
      continue;
    }
    out += '%';
    appendHexByte(out, static_cast<unsigned char>(character), kUppercaseHexDigits);
  }
}

}  // namespace

// The library's reading of a text, which must outlive it.
class URL::Reading {
 public:
  explicit Reading(std::string_view text) : text_(text) {
    const char* errorPosition = nullptr;
    const int answer = uriParseSingleUriExA(&uri_, text.data(), text.data() + text.size(), &errorPosition);
    // Says nothing about the text.
    if (answer == URI_ERROR_MALLOC) throw std::bad_alloc();
    isWellFormed_ = answer == URI_SUCCESS;
  }
  ~Reading() {
    if (isWellFormed_) uriFreeUriMembersA(&uri_);
  }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  bool isWellFormed() const { return isWellFormed_; }
  // REQUIRES: isWellFormed()
  Components components() const {
    Components found{
        range(uri_.scheme), range(uri_.userInfo), range(uri_.hostText), range(uri_.portText), {}};
    if (uri_.userInfo.first != nullptr)
      found.credentials = {position(uri_.userInfo.first), found.credentials.length + 1};
    found.path.length = pathLength();
    found.path.start = pathEnd() - found.path.length;
    return found;
  }

 private:
  std::size_t position(const char* place) const { return static_cast<std::size_t>(place - text_.data()); }

  // What is empty need not lie in the text.
  Range range(const UriTextRangeA& found) const {
    if (found.first == found.afterLast) return {};
    return {position(found.first), static_cast<std::size_t>(found.afterLast - found.first)};
  }

  // Only the segments that are not empty say where they stand. Before each is a slash, but for the first of a
  // relative path.
  std::size_t pathLength() const {
    if (uri_.pathHead == nullptr) return uri_.absolutePath != URI_FALSE ? 1 : 0;
    std::size_t length = 0;
    for (const UriPathSegmentA* segment = uri_.pathHead; segment != nullptr; segment = segment->next) {
      length += 1 + range(segment->text).length;
    }
    const bool isRelative = uri_.absolutePath == URI_FALSE && uri_.hostText.first == nullptr;
    return isRelative ? length - 1 : length;
  }

  std::size_t pathEnd() const {
    if (uri_.query.first != nullptr) return position(uri_.query.first) - 1;
    return uri_.fragment.first != nullptr ? position(uri_.fragment.first) - 1 : text_.size();
  }

  std::string_view text_;
  UriUriA uri_{};
  bool isWellFormed_ = false;
};

std::optional<URL> URL::parse(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const Reading reading(text);
  if (!reading.isWellFormed()) return std::nullopt;
  return URL(std::string(text), reading.components());
}

URL URL::file(std::string_view absolutePath) {
  if (!absolutePath.starts_with('/')) fatalError("A file URL needs an absolute path");
  std::string text = "file://";
  appendPercentEncoded(text, absolutePath);
  return *parse(text);
}

std::string URL::withoutSecrets() const {
  const auto& [scheme, credentials, host, port, path] = components_;
  return text_.substr(0, path.start + path.length).erase(credentials.start, credentials.length);
}

std::string URL::scheme() const {
  return lowercased(at(components_.scheme));
}

std::string_view URL::userInfo() const {
  const std::string_view credentials = at(components_.credentials);
  return credentials.substr(0, credentials.find_last_of('@'));
}

std::string URL::host() const {
  return lowercased(at(components_.host));
}

std::string URL::port() const {
  return std::string(at(components_.port));
}

std::string URL::path() const {
  return std::string(at(components_.path));
}

std::string URL::lastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(at(components_.path));
  return percentDecoded(path.substr(path.find_last_of('/') + 1));
}

std::string URL::filePath() const {
  return percentDecoded(at(components_.path));
}

URL URL::appendingPathComponent(std::string_view component) const {
  const Range& path = components_.path;
  const std::size_t kept = path.start + withoutTrailingSlashes(at(path)).size();
  component.remove_prefix(std::min(component.find_first_not_of('/'), component.size()));
  std::string joined;
  joined.reserve(text_.size() + 1 + component.size());
  joined.append(text_, 0, kept).append("/");
  appendPercentEncoded(joined, component);
  // Nothing but the path has changed.
  Components components = components_;
  components.path.length = joined.size() - path.start;
  joined.append(text_, path.start + path.length);
  return {std::move(joined), components};
}

}  // namespace QXPlatform
