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
#include "tools/qx/check/PlacedFindings.h"

namespace qx {

namespace {

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
    return [&, place, findings = findPlaced(text, place, options.limit)]() mutable {
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
