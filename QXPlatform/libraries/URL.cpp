#include "QXPlatform/foundation/URL.h"

#include <uriparser/Uri.h>

#include <algorithm>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/FatalError.h"

namespace QXPlatform {

namespace {

bool isWellFormed(std::string_view text) {
  UriUriA uri;
  const char* errorPosition = nullptr;
  const int outcome = uriParseSingleUriExA(&uri, text.data(), text.data() + text.size(), &errorPosition);
  if (outcome == URI_SUCCESS) uriFreeUriMembersA(&uri);
  return outcome == URI_SUCCESS;
}

// The components of a reference that is known to be well formed, as written; for such a text the delimiters
// alone tell them apart.
struct Parts {
  std::string_view scheme;
  std::string_view authority;
  std::string_view path;
  std::string_view queryAndFragment;  // from its "?" or "#"
};

// One vectorised search a delimiter, where find_first_of() would make one for every character of the text.
std::size_t findFirst(std::string_view text, std::string_view delimiters) {
  std::size_t first = std::string_view::npos;
  for (const char delimiter : delimiters) first = std::min(first, text.find(delimiter));
  return first;
}

std::string_view takeUntil(std::string_view& rest, std::string_view delimiters) {
  const std::string_view taken = rest.substr(0, findFirst(rest, delimiters));
  rest.remove_prefix(taken.size());
  return taken;
}

Parts split(std::string_view text) {
  Parts parts;
  const std::size_t delimiter = findFirst(text, ":/?#");
  if (delimiter != std::string_view::npos && text[delimiter] == ':') {
    parts.scheme = text.substr(0, delimiter);
    text.remove_prefix(delimiter + 1);
  }
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    parts.authority = takeUntil(text, "/?#");
  }
  parts.path = takeUntil(text, "?#");
  parts.queryAndFragment = text;
  return parts;
}

std::string_view withoutUserInfo(std::string_view authority) {
  return authority.substr(authority.find('@') + 1);
}

std::string_view withoutTrailingSlashes(std::string_view path) {
  return path.substr(0, path.find_last_not_of('/') + 1);
}

std::string percentDecoded(std::string_view text) {
  std::string decoded(text);
  const char* end = uriUnescapeInPlaceExA(decoded.data(), URI_FALSE, URI_BR_DONT_TOUCH);
  decoded.resize(static_cast<std::size_t>(end - decoded.data()));
  return decoded;
}

// What a path may hold as it is.
bool isPathCharacter(char character) {
  constexpr std::string_view kOthers = "/-._~!$&'()*+,;=:@";
  return isASCIIAlphanumeric(character) || kOthers.find(character) != std::string_view::npos;
}

std::string percentEncodedPath(std::string_view path) {
  std::string encoded;
  encoded.reserve(path.size());
  for (const char character : path) {
    if (isPathCharacter(character)) {
      encoded += character;
      continue;
    }
    encoded += '%';
    appendHexByte(encoded, static_cast<unsigned char>(character), kUppercaseHexDigits);
  }
  return encoded;
}

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
  if (text.empty() || !isWellFormed(text)) return std::nullopt;
  return URL(std::string(text));
}

URL URL::file(std::string_view absolutePath) {
  if (!absolutePath.starts_with('/')) fatalError("A file URL needs an absolute path");
  return URL("file://" + percentEncodedPath(absolutePath));
}

std::string URL::withoutSecrets() const {
  const Parts parts = split(text_);
  std::string_view before = std::string_view(text_).substr(0, text_.size() - parts.queryAndFragment.size());
  before.remove_suffix(parts.path.size() + parts.authority.size());
  return std::string(before).append(withoutUserInfo(parts.authority)).append(parts.path);
}

std::string URL::scheme() const {
  return lowercased(split(text_).scheme);
}

std::string URL::host() const {
  std::string_view host = withoutUserInfo(split(text_).authority);
  const bool bracketed = host.starts_with('[');
  host = bracketed ? host.substr(1, host.find(']') - 1) : host.substr(0, host.find(':'));
  return lowercased(host);
}

std::string URL::path() const {
  return std::string(split(text_).path);
}

std::string URL::lastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(split(text_).path);
  return percentDecoded(path.substr(path.find_last_of('/') + 1));
}

std::string URL::filePath() const {
  return percentDecoded(split(text_).path);
}

URL URL::appendingPathComponent(std::string_view component) const {
  const Parts parts = split(text_);
  const std::string_view tail = parts.queryAndFragment;
  const std::string_view head = std::string_view(text_).substr(0, text_.size() - tail.size());
  const std::size_t pathStart = head.size() - parts.path.size();
  const std::size_t pathEnd = pathStart + withoutTrailingSlashes(parts.path).size();
  component.remove_prefix(std::min(component.find_first_not_of('/'), component.size()));

  std::string joined(head.substr(0, pathEnd));
  joined += '/';
  joined += percentEncodedPath(component);
  joined += tail;
  return URL(std::move(joined));
}

}  // namespace QXPlatform
