#include "tools/qx/check/FindingFormat.h"

#include <cstddef>
#include <cstdint>

#include "QXExtensionSDK/Version.h"
#include "QXPlatform/foundation/ASCII.h"
#include "tools/qx/Printable.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Value;

std::string_view severityName(const Finding& finding) {
  return finding.isError() ? "error" : "warning";
}

Value number(std::size_t count) {
  return static_cast<std::int64_t>(count);
}

std::string placeText(const LocatedFinding& located) {
  return printable(located.file) + ":" + std::to_string(located.position.line) + ":" +
         std::to_string(located.position.column);
}

// As a reference to a file writes it; a colon would end a scheme.
std::string uriOf(std::string_view file) {
  constexpr std::string_view kPlain = "/-._~";
  std::string uri;
  for (const char byte : file) {
    if (QXPlatform::isASCIIAlphanumeric(byte) || kPlain.find(byte) != std::string_view::npos) {
      uri += byte;
    } else {
      uri += '%';
      QXPlatform::appendHexByte(uri, static_cast<unsigned char>(byte), QXPlatform::kUppercaseHexDigits);
    }
  }
  return uri;
}

// As the format of workflow commands asks.
std::string escaped(std::string_view text, std::string_view others) {
  std::string result;
  for (const char character : text) {
    if (character == '%') {
      result += "%25";
    } else if (character == '\n') {
      result += "%0A";
    } else if (character == '\r') {
      result += "%0D";
    } else if (others.find(character) != std::string_view::npos) {
      result += character == ':' ? "%3A" : "%2C";
    } else {
      result += character;
    }
  }
  return result;
}

std::string messageWithHint(const Finding& finding) {
  return finding.hint.empty() ? finding.message : finding.message + "; " + finding.hint;
}

Value toResult(const LocatedFinding& located) {
  const Finding& finding = located.finding;
  const std::string uri = located.file == "-" ? "stdin" : uriOf(located.file);
  const Dictionary region{{"startLine", number(located.position.line)},
                          {"startColumn", number(located.position.column)}};
  const Dictionary location{
      {"physicalLocation", Dictionary{{"artifactLocation", Dictionary{{"uri", uri}}}, {"region", region}}},
      {"logicalLocations", std::vector<Value>{Dictionary{{"fullyQualifiedName", finding.at}}}}};
  return Dictionary{{"level", severityName(finding)},
                    {"message", Dictionary{{"text", messageWithHint(finding)}}},
                    {"locations", std::vector<Value>{location}}};
}

}  // namespace

Dictionary toJSON(const LocatedFinding& located) {
  const Finding& finding = located.finding;
  const Dictionary line{{"severity", severityName(finding)},
                        {"at", finding.at},
                        {"message", finding.message},
                        {"file", located.file},
                        {"line", number(located.position.line)},
                        {"column", number(located.position.column)}};
  return finding.hint.empty() ? line : line.setting("hint", finding.hint);
}

std::string toText(const LocatedFinding& located, bool inColor) {
  const Finding& finding = located.finding;
  const auto styled = [inColor](std::string_view code, std::string_view text) {
    return inColor ? std::string("\033[").append(code).append("m").append(text).append("\033[0m")
                   : std::string(text);
  };
  const std::string number = std::to_string(located.position.line);
  const std::string margin(number.size(), ' ');
  std::string text = styled("1", placeText(located)) + ": " +
                     styled(finding.isError() ? "1;31" : "1;33", severityName(finding)) + ": " +
                     printable((finding.at.empty() ? "" : finding.at + ": ") + finding.message) + "\n";
  text += "  " + number + " | " + printable(located.excerpt.text) + "\n";
  text += "  " + margin + " | " + std::string(located.excerpt.column, ' ') + styled("1;32", "^") + "\n";
  if (!finding.hint.empty())
    text += "  " + margin + " = " + styled("1;36", "hint") + ": " + printable(finding.hint) + "\n";
  return text;
}

std::string toGitHub(const LocatedFinding& located) {
  const Finding& finding = located.finding;
  return std::string("::")
      .append(severityName(finding))
      .append(" file=")
      .append(escaped(printable(located.file), ":,"))
      .append(",line=")
      .append(std::to_string(located.position.line))
      .append(",col=")
      .append(std::to_string(located.position.column))
      .append(",title=")
      .append(escaped(finding.at.empty() ? "push" : printable(finding.at), ":,"))
      .append("::")
      .append(escaped(printable(messageWithHint(finding)), ""))
      .append("\n");
}

Dictionary toSARIF(const std::vector<LocatedFinding>& findings) {
  std::vector<Value> results;
  results.reserve(findings.size());
  for (const LocatedFinding& located : findings) results.push_back(toResult(located));
  const Dictionary driver{
      {"name", "qx check"},
      {"version", reinterpret_cast<const char*>(QXExtensionSDK::QXExtensionSDKVersionString)}};
  const Dictionary run{
      {"tool", Dictionary{{"driver", driver}}}, {"columnKind", "unicodeCodePoints"}, {"results", results}};
  return {{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
          {"version", "2.1.0"},
          {"runs", std::vector<Value>{run}}};
}

}  // namespace qx
