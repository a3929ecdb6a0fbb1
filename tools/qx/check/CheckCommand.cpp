#include "tools/qx/check/CheckCommand.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "tools/qx/EachPush.h"
#include "tools/qx/Results.h"
#include "tools/qx/SimulatedLog.h"
#include "tools/qx/check/PushChecks.h"
#include "tools/qx/check/SyntaxCheck.h"

namespace qx {

namespace {

// The text of one push, and where in a file it stands.
struct Source {
  std::string_view text;
  const PushPlace& place;
};

LocatedFinding locate(Finding finding, const Source& source, std::size_t offset) {
  SourcePosition position = positionOf(source.text, offset);
  position.line += source.place.line - 1;
  return {std::move(finding), source.place.file, position, std::string(lineAround(source.text, offset))};
}

Finding atTheWhole(std::string message, std::string hint) {
  return {Finding::Severity::error, "", std::move(message), std::move(hint), ""};
}

// What keeps a text from being a push at all: its JSON, or the members that make a push.
LocatedFinding whyNoPush(const Source& source, const QXPlatform::Error& reason) {
  if (auto syntax = findSyntaxProblem(source.text)) {
    return locate(atTheWhole(std::move(syntax->message), std::move(syntax->hint)), source, syntax->offset);
  }
  const std::string& message = reason.message;
  const std::string_view pointer = std::string_view(message).substr(0, message.find(": "));
  const bool hasPlace = message.starts_with('/');
  return locate(atTheWhole(message, ""), source, offsetOf(source.text, hasPlace ? pointer : ""));
}

std::vector<LocatedFinding> findingsOf(const Source& source, PushLimit limit) {
  const auto push = PushDocument::parse(source.text);
  if (!push) return {whyNoPush(source, push.error())};
  std::vector<LocatedFinding> located;
  for (Finding& finding : checkPush(*push, limit)) {
    const std::size_t offset = offsetOf(source.text, finding.source);
    located.push_back(locate(std::move(finding), source, offset));
  }
  return located;
}

std::string inFormat(FindingFormat format, const SimulatorOptions& simulator, const LocatedFinding& located) {
  static const bool inColor = isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
  if (format == FindingFormat::text) return toText(located, inColor);
  if (format == FindingFormat::github) return toGitHub(located);
  return resultText(simulator, toJSON(located));
}

// "push.json: 2 errors, first at /_rf/vt"; nothing when nothing fails.
std::string verdict(const PushPlace& place, const std::vector<LocatedFinding>& findings, bool strict) {
  const auto fails = [strict](const LocatedFinding& each) { return strict || each.finding.isError(); };
  const auto failures = std::ranges::count_if(findings, fails);
  if (failures == 0) return {};
  const LocatedFinding& first = findings.front();
  const std::string where = first.finding.at.empty() ? "line " + std::to_string(first.position.line) +
                                                           ", column " + std::to_string(first.position.column)
                                                     : first.finding.at;
  return place.name + ": " + std::to_string(failures) + (strict ? " finding" : " error") +
         (failures == 1 ? "" : "s") + ", first at " + where;
}

}  // namespace

int runCheck(const SimulatorOptions& simulator, const CheckOptions& options) {
  const SimulatedLog log(simulator);
  const FindingFormat format =
      options.format.value_or(isatty(STDOUT_FILENO) != 0 ? FindingFormat::text : FindingFormat::json);
  std::vector<LocatedFinding> forSARIF;
  const auto print = [&](LocatedFinding& located) {
    if (format != FindingFormat::sarif) {
      std::cout << inFormat(format, simulator, located);
    } else {
      forSARIF.push_back(std::move(located));
    }
  };
  const auto examine = [&](const std::string& text, const PushPlace& place) -> PushReport {
    return [&, place, findings = findingsOf({text, place}, options.limit)]() mutable {
      const std::string failure = verdict(place, findings, options.strict);
      std::ranges::for_each(findings, print);
      std::cout.flush();
      return failure.empty() || fail("check", failure) == 0;
    };
  };
  const int exitCode = forEachPush("check", options.input, examine);
  if (format == FindingFormat::sarif) printResult(simulator, toSARIF(forSARIF));
  return exitCode;
}

}  // namespace qx
