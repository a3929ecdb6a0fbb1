#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/qx/AuthoringCommands.h"
#include "tools/qx/EachPush.h"
#include "tools/qx/Results.h"
#include "tools/qx/SimulatedLog.h"
#include "tools/qx/check/PushChecks.h"

namespace qx {

namespace {

bool isError(const Finding& finding) {
  return finding.severity == Finding::Severity::error;
}

QXPlatform::Dictionary toJSON(const Finding& finding, const PushPlace& place) {
  const QXPlatform::Dictionary line{
      {"severity", isError(finding) ? "error" : "warning"}, {"at", finding.at}, {"message", finding.message}};
  return place.line ? line.setting("line", static_cast<std::int64_t>(*place.line)) : line;
}

// Whether the push is free of errors.
bool report(const SimulatorOptions& simulator, const std::vector<Finding>& findings, const PushPlace& place) {
  for (const Finding& finding : findings) printResult(simulator, toJSON(finding, place));
  const auto errors = std::ranges::count_if(findings, isError);
  if (errors == 0) return true;
  fail("check", place.name + ": " + std::to_string(errors) + (errors == 1 ? " error" : " errors") +
                    ", first at " + findings.front().at);
  return false;
}

}  // namespace

int runCheck(const SimulatorOptions& simulator, const std::string& file) {
  const SimulatedLog log(simulator);
  return forEachPush("check", file, [&](const PushDocument& push, const PushPlace& place) {
    return report(simulator, checkPush(push), place);
  });
}

}  // namespace qx
