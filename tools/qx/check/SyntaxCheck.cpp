#include "tools/qx/check/SyntaxCheck.h"

#include <algorithm>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/JSONTextError.h"
#include "QXPlatform/foundation/UTF8.h"

namespace qx {

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";

// What a file begins with when an editor has chosen another encoding.
std::optional<SyntaxProblem> findEncodingProblem(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) {
    return SyntaxProblem{0, "a byte order mark before the JSON", "save the file as UTF-8 without one"};
  }
  const bool isUTF16 = text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") ||
                       text.substr(0, 2).find('\0') != std::string_view::npos;
  if (isUTF16) return SyntaxProblem{0, "UTF-16, where JSON is UTF-8", "save the file as UTF-8"};
  return std::nullopt;
}

std::string_view beforeIt(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  return before.substr(0, before.find_last_not_of(kWhiteSpace) + 1);
}

bool beginsValue(char character) {
  return std::string_view("\"{[-").find(character) != std::string_view::npos ||
         QXPlatform::isASCIIAlphanumeric(character);
}

bool endsValue(char character) {
  return std::string_view("\"}]").find(character) != std::string_view::npos ||
         QXPlatform::isASCIIAlphanumeric(character);
}

// REQUIRES: the text is JSON as far as it goes.
bool endsInsideString(std::string_view text) {
  bool isInside = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') isInside = !isInside;
    if (text[i] == '\\' && isInside) ++i;
  }
  return isInside;
}

SyntaxProblem explainEscape(std::string_view text, std::size_t offset) {
  const std::size_t begin = text.rfind('\\', offset);
  const std::string_view escape = text.substr(begin, std::string_view("\\u0000").size());
  if (escape.starts_with("\\u")) {
    const std::string_view digits = escape.substr(2);
    if (digits.size() == 4 && std::ranges::all_of(digits, QXPlatform::isHexDigit)) {
      return {begin, "one half of a surrogate pair", "write both halves, or the character itself"};
    }
    return {begin, "an escape without its four hexadecimal digits", R"(write it as \u00e9 is)"};
  }
  if (escape.starts_with("\\'")) return {begin, "an escape that JSON does not have", "write ' alone"};
  return {begin, "an escape that JSON does not have", R"(write \\ for a backslash)"};
}

SyntaxProblem explainInsideString(std::string_view text, std::size_t offset) {
  const char next = text[offset];
  if (next == '\n' || next == '\r') {
    return {offset, "a line ends within a text", R"(end the text with a quote, or write \n)"};
  }
  if (next == '\t') return {offset, "a tab within a text", R"(write \t)"};
  if (static_cast<unsigned char>(next) < 0x20) {
    return {offset, "a control character within a text", "take it out"};
  }
  return explainEscape(text, offset);
}

// What other languages call a value.
std::optional<SyntaxProblem> explainWord(std::string_view rest, std::size_t offset) {
  const auto* end = std::ranges::find_if_not(rest, QXPlatform::isASCIIAlphanumeric);
  const std::string word(rest.begin(), end);
  const std::string lower = QXPlatform::lowercased(word);
  const bool isMiswritten = lower == "true" || lower == "false" || lower == "null";
  const bool isForeign = lower == "none" || lower == "nan" || lower == "undefined" || lower == "infinity";
  if (!isMiswritten && !isForeign) return std::nullopt;
  return SyntaxProblem{offset, word + ", which JSON does not have",
                       "write " + (isMiswritten ? lower : std::string("null"))};
}

bool beginsKey(char character) {
  return character == '_' || character == '$' || QXPlatform::isASCIIAlphanumeric(character);
}

// REQUIRES: `rest`, what follows, is not empty.
std::optional<SyntaxProblem> explain(std::string_view before, std::string_view rest, std::size_t offset) {
  const char next = rest.front();
  const char last = before.empty() ? '\0' : before.back();
  if (next == '\'') return SyntaxProblem{offset, "single quotes", "write double quotes"};
  if (rest.starts_with("\u201C") || rest.starts_with("\u201D")) {
    return SyntaxProblem{offset, "curly quotes", "write straight double quotes"};
  }
  if (next == '/' || next == '#') {
    return SyntaxProblem{offset, "a comment, which JSON does not have", "take it out"};
  }
  if ((next == '}' || next == ']') && last == ',') {
    return SyntaxProblem{before.size() - 1, "a comma after the last element", "take it out"};
  }
  if ((last == '{' || last == ',') && beginsKey(next) && rest.find(':') < rest.find_first_of("\",{}[]")) {
    return SyntaxProblem{offset, "a key without quotes", "write it in double quotes"};
  }
  if (endsValue(last) && beginsValue(next)) {
    return SyntaxProblem{offset, "a comma or a colon is missing before this", ""};
  }
  return explainWord(rest, offset);
}

}  // namespace

std::optional<SyntaxProblem> findSyntaxProblem(std::string_view text) {
  const auto error = QXPlatform::findJSONTextError(text);
  if (!error) return std::nullopt;
  if (auto problem = findEncodingProblem(text)) return problem;
  if (!QXPlatform::isValidUTF8(text)) {
    return SyntaxProblem{error->offset, "not UTF-8 text", "save the file as UTF-8"};
  }
  const std::size_t offset = std::min(text.find_first_not_of(kWhiteSpace, error->offset), text.size());
  if (offset == text.size()) return SyntaxProblem{offset, "the text ends too early: " + error->reason, ""};
  if (!QXPlatform::findJSONTextError(text.substr(0, error->offset))) {
    return SyntaxProblem{offset, "more text after the end of the JSON",
                         "name a file that holds one push a line .ndjson"};
  }
  if (endsInsideString(text.substr(0, error->offset))) return explainInsideString(text, error->offset);
  if (auto problem = explain(beforeIt(text, offset), text.substr(offset), offset)) return problem;
  return SyntaxProblem{error->offset, error->reason, ""};
}

}  // namespace qx
