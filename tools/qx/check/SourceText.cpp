#include "tools/qx/check/SourceText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "QXPlatform/foundation/JSON.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";

bool beginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80;
}

// Walks over a text that is known to be JSON.
class Scanner {
 public:
  Scanner(std::string_view text, std::size_t at) : text_(text), at_(at) { skipWhiteSpace(); }

  // Of the value or the mark that comes next.
  std::size_t position() const { return at_; }

  bool isAtObject() const { return text_[at_] == '{'; }
  bool isAtArray() const { return text_[at_] == '['; }

  // Into a container that holds something, else past it; then before its next element, else past its end.
  bool enter() {
    take(1);
    if (!closes()) return true;
    take(1);
    return false;
  }
  bool next() {
    const bool more = text_[at_] == ',';
    take(1);
    return more;
  }

  // The member's key; its value comes next.
  std::string key() {
    const std::size_t start = at_;
    skipValue();
    const std::string_view quoted = text_.substr(start, keyEnd_ - start);
    take(1);
    if (quoted.find('\\') == std::string_view::npos) return std::string(quoted.substr(1, quoted.size() - 2));
    return std::string(QXPlatform::parseJSON(quoted)->string().value_or(""));
  }

  void skipValue() {
    if (text_[at_] == '"') {
      skipString();
    } else if (text_[at_] == '{' || text_[at_] == '[') {
      skipContainer();
    } else {
      at_ = std::min(text_.find_first_of(",]} \t\r\n", at_), text_.size());
    }
    skipWhiteSpace();
  }

 private:
  bool closes() const { return text_[at_] == '}' || text_[at_] == ']'; }
  void take(std::size_t count) {
    at_ += count;
    skipWhiteSpace();
  }
  void skipWhiteSpace() { at_ = std::min(text_.find_first_not_of(kWhiteSpace, at_), text_.size()); }
  void skipString() {
    for (++at_; text_[at_] != '"'; ++at_) {
      if (text_[at_] == '\\') ++at_;
    }
    keyEnd_ = ++at_;
  }
  void skipContainer() {
    std::size_t depth = 0;
    do {
      if (text_[at_] == '"') {
        skipString();
        continue;
      }
      if (text_[at_] == '{' || text_[at_] == '[') ++depth;
      if (closes()) --depth;
      ++at_;
    } while (depth > 0);
  }

  const std::string_view text_;
  std::size_t at_;
  std::size_t keyEnd_ = 0;
};

// Of equal keys the last counts.
std::optional<std::size_t> findMember(std::string_view text, std::size_t object, std::string_view key) {
  Scanner scanner(text, object);
  std::optional<std::size_t> found;
  for (bool more = scanner.enter(); more; more = scanner.next()) {
    const bool isMeant = scanner.key() == key;
    if (isMeant) found = scanner.position();
    scanner.skipValue();
  }
  return found;
}

void findReplaced(Scanner& scanner, std::vector<ReplacedMember>& found);

// The same below a container, which lies at the end of that step.
void findReplacedBelow(Scanner& scanner, const std::function<std::string()>& step,
                       std::vector<ReplacedMember>& found) {
  const std::size_t before = found.size();
  findReplaced(scanner, found);
  for (std::size_t i = before; i < found.size(); ++i) found[i].pointer.insert(0, step());
}

// Goes past the scanner's value; pointers begin there.
void findReplaced(Scanner& scanner, std::vector<ReplacedMember>& found) {
  if (scanner.isAtObject()) {
    std::map<std::string, std::size_t> offsets;
    for (bool more = scanner.enter(); more; more = scanner.next()) {
      const std::string key = scanner.key();
      const auto [known, isNew] = offsets.try_emplace(key, scanner.position());
      if (!isNew) found.push_back({memberPlace("", key), std::exchange(known->second, scanner.position())});
      findReplacedBelow(
          scanner, [&] { return memberPlace("", key); }, found);
    }
  } else if (scanner.isAtArray()) {
    std::size_t index = 0;
    for (bool more = scanner.enter(); more; more = scanner.next(), ++index) {
      findReplacedBelow(
          scanner, [&] { return elementPlace("", index); }, found);
    }
  } else {
    scanner.skipValue();
  }
}

// The first and the last of characters, whose bytes order them as their numbers do.
using Characters = std::pair<std::string_view, std::string_view>;
constexpr auto kWide = std::to_array<Characters>({{"\u1100", "\u115F"},
                                                  {"\u2E80", "\uA4CF"},
                                                  {"\uAC00", "\uD7A3"},
                                                  {"\uF900", "\uFAFF"},
                                                  {"\uFE30", "\uFE6F"},
                                                  {"\uFF01", "\uFF60"},
                                                  {"\uFFE0", "\uFFE6"},
                                                  {"\U0001F300", "\U0001FAFF"},
                                                  {"\U00020000", "\U0003FFFD"}});
constexpr auto kWithoutWidth =
    std::to_array<Characters>({{"\u0300", "\u036F"}, {"\u200B", "\u200F"}, {"\uFE00", "\uFE0F"}});

bool isOneOf(std::span<const Characters> ranges, std::string_view character) {
  return std::ranges::any_of(
      ranges, [=](const Characters& each) { return each.first <= character && character <= each.second; });
}

// In a terminal's columns.
std::size_t widthOf(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    std::size_t size = 1;
    while (size < text.size() && !beginsCharacter(text[size])) ++size;
    const std::string_view character = text.substr(0, size);
    if (!isOneOf(kWithoutWidth, character)) width += isOneOf(kWide, character) ? 2 : 1;
    text.remove_prefix(size);
  }
  return width;
}

std::optional<std::size_t> findElement(std::string_view text, std::size_t array, std::string_view step) {
  std::size_t index = 0;
  if (std::from_chars(step.data(), step.data() + step.size(), index).ec != std::errc()) return std::nullopt;
  Scanner scanner(text, array);
  for (bool more = scanner.enter(); more; more = scanner.next()) {
    if (index-- == 0) return scanner.position();
    scanner.skipValue();
  }
  return std::nullopt;
}

}  // namespace

SourcePosition positionOf(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const std::string_view line = before.substr(before.rfind('\n') + 1);
  return {static_cast<std::size_t>(std::ranges::count(before, '\n')) + 1,
          static_cast<std::size_t>(std::ranges::count_if(line, beginsCharacter)) + 1};
}

std::size_t offsetOf(std::string_view text, std::string_view pointer) {
  std::size_t at = Scanner(text, 0).position();
  while (!pointer.empty()) {
    const std::size_t end = std::min(pointer.find('/', 1), pointer.size());
    const std::string_view step = pointer.substr(1, end - 1);
    const auto found = text[at] == '{'   ? findMember(text, at, unescapedStep(step))
                       : text[at] == '[' ? findElement(text, at, step)
                                         : std::nullopt;
    if (!found) return at;
    at = *found;
    pointer.remove_prefix(end);
  }
  return at;
}

std::vector<ReplacedMember> findReplacedMembers(std::string_view text) {
  std::vector<ReplacedMember> found;
  Scanner scanner(text, 0);
  findReplaced(scanner, found);
  return found;
}

Excerpt excerptAround(std::string_view text, std::size_t offset) {
  constexpr std::size_t kMostBefore = 60;
  constexpr std::size_t kMostShown = 100;
  constexpr std::size_t kMostBytesACharacter = 4;
  std::size_t before = 0;
  std::size_t begin = offset;
  while (begin > 0 && text[begin - 1] != '\n' && before < kMostBefore) {
    if (beginsCharacter(text[--begin])) ++before;
  }
  std::string_view line = text.substr(begin, kMostBytesACharacter * kMostShown);
  line = line.substr(0, line.find('\n', offset - begin));
  if (line.ends_with('\r')) line.remove_suffix(1);
  std::size_t characters = 0;
  const auto* end = std::ranges::find_if(
      line, [&](char byte) { return beginsCharacter(byte) && characters++ == kMostShown; });
  return {std::string(line.begin(), end), widthOf(text.substr(begin, offset - begin))};
}

}  // namespace qx
