#include "tools/qx/check/Hints.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/JSON.h"
#include "tools/qx/NearestWord.h"

namespace qx {

namespace {

using QXPlatform::Value;

std::string write(const Value& value) {
  return "write " + QXPlatform::writeJSON(value, QXPlatform::JSONStyle::compact).value();
}

// "not one of S, M, L" of an "s".
std::string inRightCase(std::string_view message, std::string_view written) {
  message.remove_prefix(std::string_view("not one of ").size());
  while (!message.empty()) {
    const std::string_view known = message.substr(0, message.find(", "));
    if (QXPlatform::equalsIgnoringCase(known, written)) return write(known);
    message.remove_prefix(std::min(known.size() + 2, message.size()));
  }
  return {};
}

std::string asJSONObject(const Value& found) {
  const auto text = found.string();
  const auto inside = text ? QXPlatform::parseJSON(*text) : Value();
  return inside && inside->isDictionary() ? "write the object itself, not a text that holds it" : "";
}

// Whether the short key's letters stand in the word in their order, the first of them in front: "tx" in
// "text", "md" in "media".
bool abbreviates(std::string_view key, std::string_view word) {
  if (key.empty() || word.empty() || key.front() != word.front()) return false;
  for (const char letter : word) {
    if (!key.empty() && key.front() == letter) key.remove_prefix(1);
  }
  return key.empty();
}

// Of the short keys each is near every other.
std::vector<std::string> spelledOut(const std::vector<std::string_view>& keys) {
  constexpr std::size_t kShortestWord = 4;
  std::vector<std::string> words;
  for (const std::string_view key : keys) {
    if (key.size() >= kShortestWord) words.emplace_back(key);
  }
  return words;
}

bool isMixedUp(std::string_view written, std::string_view key) {
  return std::ranges::is_permutation(written, key);
}

}  // namespace

std::string hintFor(const QXPlatform::DecodingError& error, const Value& found) {
  const std::string_view message = error.message;
  if (message.starts_with("expected text")) return hintForText(found);
  if (message.starts_with("expected an integer")) return hintForInteger(found);
  if (message.starts_with("expected an object")) return asJSONObject(found);
  if (message.starts_with("expected an array"))
    return found.isDictionary() ? "write it in brackets: [...]" : "";
  if (message.starts_with("not one of ")) return inRightCase(message, found.string().value_or(""));
  return {};
}

std::string hintForText(const Value& found) {
  if (found.isDictionary() || found.isArray() || found.isNull()) return {};
  return write(found.description());
}

std::string hintForChoice(std::string_view message) {
  constexpr std::string_view kStart = "not one of ";
  if (!message.starts_with(kStart)) return {};
  return "write one of " + std::string(message.substr(kStart.size()));
}

std::string hintForInteger(const Value& found) {
  std::int64_t integer = 0;
  if (const auto text = found.string()) {
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), integer);
    return error == std::errc() && end == text->data() + text->size() ? write(integer) : std::string();
  }
  const auto number = found.number();
  return number && std::abs(*number) < 1e15 ? write(std::llround(*number)) : std::string();
}

std::string hintForKey(std::string_view written, const std::vector<std::string_view>& known) {
  const std::string word = QXPlatform::lowercased(written);
  std::string_view best;
  for (const std::string_view key : known) {
    if ((abbreviates(key, word) || isMixedUp(word, key)) && key.size() > best.size()) best = key;
  }
  const auto nearest = best.empty() ? nearestWord(word, spelledOut(known)) : std::nullopt;
  if (nearest) best = *nearest;
  return best.empty() ? std::string() : std::string("did you mean ").append(best).append("?");
}

std::string hintForColor(std::string_view written) {
  if (written.starts_with('#')) written.remove_prefix(1);
  if (!std::ranges::all_of(written, QXPlatform::isHexDigit)) return {};
  std::string digits(written);
  if (written.size() == 3) {
    digits.clear();
    for (const char digit : written) digits.append(2, digit);
  }
  return digits.size() == 6 ? write(digits) : std::string();
}

}  // namespace qx
