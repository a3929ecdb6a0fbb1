#include "tools/qx/check/CheckCommand.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "tools/qx/EachPush.h"
#include "tools/qx/JUnit.h"
#include "tools/qx/Results.h"
#include "tools/qx/SimulatedLog.h"
#include "tools/qx/check/PlacedFindings.h"

namespace qx {

namespace {

std::string inFormat(FindingFormat format, const SimulatorOptions& simulator, const LocatedFinding& located) {
  if (format == FindingFormat::text) return toText(located, isInColour());
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

std::string testName(const PushPlace& place) {
  return (place.file == "-" ? "standard input" : place.file) + ":" + std::to_string(place.line);
}

TestCase testCase(const PushPlace& place, const std::vector<LocatedFinding>& findings, bool strict) {
  TestCase test{.name = testName(place)};
  for (const LocatedFinding& located : findings) {
    const Finding& finding = located.finding;
    if (!strict && !finding.isError()) continue;
    test.failures.push_back((finding.at.empty() ? "" : finding.at + ": ") + finding.message);
  }
  return test;
}

}  // namespace

int runCheck(const SimulatorOptions& simulator, const CheckOptions& options) {
  const SimulatedLog log(simulator);
  const FindingFormat format =
      options.format.value_or(isForPeople(simulator) ? FindingFormat::text : FindingFormat::json);
  std::vector<LocatedFinding> forSARIF;
  const auto print = [&](LocatedFinding& located) {
    if (format != FindingFormat::sarif) {
      std::cout << inFormat(format, simulator, located);
    } else {
      forSARIF.push_back(std::move(located));
    }
  };
  std::vector<TestCase> tests;
  const auto examine = [&](const std::string& text, const PushPlace& place) -> PushReport {
    return [&, place, findings = findPlaced(text, place, options.limit)]() mutable {
      const std::string failure = verdict(place, findings, options.strict);
      if (options.junit) tests.push_back(testCase(place, findings, options.strict));
      std::ranges::for_each(findings, print);
      if (failure.empty()) return true;
      std::cout.flush();
      return fail("check", failure) == 0;
    };
  };
  const auto unreadable = [&](const PushPlace& place, const QXPlatform::Error& reason) {
    tests.push_back({.name = testName(place), .error = reason.message});
    LocatedFinding located = unreadableFile(place, reason);
    // People have read it already, on standard error.
    if (format != FindingFormat::text) print(located);
  };
  int exitCode = forEachPush("check", options.input, examine, unreadable);
  if (options.junit) {
    const auto problem = writeJUnit(*options.junit, "qx check", tests);
    if (problem) exitCode = fail("check", problem->message);
  }
  if (format == FindingFormat::sarif) printResult(simulator, toSARIF(forSARIF));
  return exitCode;
}

}  // namespace qx
