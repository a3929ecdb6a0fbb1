#include "tools/qx/JUnit.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "QXPlatform/foundation/Markup.h"
#include "QXPlatform/foundation/UTF8.h"

namespace qx {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// U+FFFE and U+FFFF are characters of UTF-8, but not of XML.
std::string withoutNoncharacters(std::string text) {
  const std::string_view begin = kReplacement.substr(0, 2);
  for (std::size_t at = 0; (at = text.find(begin, at)) != std::string::npos; at += kReplacement.size()) {
    if (text[at + 2] > kReplacement.back()) text[at + 2] = kReplacement.back();
  }
  return text;
}

std::string attribute(std::string_view name, std::string_view text) {
  std::string result = " " + std::string(name) + "=\"";
  const std::string valid = withoutNoncharacters(QXPlatform::replacingInvalidUTF8(text));
  for (const char character : QXPlatform::escapedMarkup(valid)) {
    if (character == '\n') {
      result += "&#10;";
    } else if (static_cast<unsigned char>(character) < 0x20) {
      result += kReplacement;  // what XML has no room for at all
    } else {
      result += character;
    }
  }
  return result + "\"";
}

std::string caseXML(std::string_view suite, const TestCase& test) {
  std::string xml = "    <testcase" + attribute("classname", suite) + attribute("name", test.name) +
                    attribute("time", std::to_string(test.seconds)) + ">\n";
  if (test.error) xml += "      <error" + attribute("message", *test.error) + "/>\n";
  for (const std::string& failure : test.failures) {
    xml += "      <failure" + attribute("message", failure) + "/>\n";
  }
  return xml + "    </testcase>\n";
}

}  // namespace

std::optional<QXPlatform::Error> writeJUnit(const std::string& file, std::string_view suite,
                                            const std::vector<TestCase>& cases) {
  const auto errors =
      std::ranges::count_if(cases, [](const TestCase& each) { return each.error.has_value(); });
  const auto failed =
      std::ranges::count_if(cases, [](const TestCase& each) { return !each.failures.empty(); });
  std::ofstream output(file);
  output << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n  <testsuite"
         << attribute("name", suite) << attribute("tests", std::to_string(cases.size()))
         << attribute("failures", std::to_string(failed)) << attribute("errors", std::to_string(errors))
         << ">\n";
  for (const TestCase& each : cases) output << caseXML(suite, each);
  output << "  </testsuite>\n</testsuites>\n";
  if (output.flush()) return std::nullopt;
  return QXPlatform::Error{file + ": " + std::strerror(errno)};
}

}  // namespace qx
