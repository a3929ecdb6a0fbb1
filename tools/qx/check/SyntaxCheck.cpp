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
  if ((last == '{' || last == ',') && QXPlatform::isASCIIAlphanumeric(next) &&
      rest.find(':') < rest.find_first_of("\",{}[]")) {
    return SyntaxProblem{offset, "a key without quotes", "write it in double quotes"};
  }
  if (endsValue(last) && beginsValue(next)) {
    return SyntaxProblem{offset, "a comma or a colon is missing before this", ""};
  }
  return std::nullopt;
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
  if (auto problem = explain(beforeIt(text, offset), text.substr(offset), offset)) return problem;
  return SyntaxProblem{error->offset, error->reason, ""};
}

}  // namespace qx
