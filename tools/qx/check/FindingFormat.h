#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/qx/check/Findings.h"
#include "tools/qx/check/SourceText.h"

namespace qx {

enum class FindingFormat { text, json, github, sarif };
constexpr auto rawValues(QXPlatform::RawValuesOf<FindingFormat>) {
  return std::to_array<QXPlatform::RawCase<FindingFormat>>({{FindingFormat::text, "text"},
                                                            {FindingFormat::json, "json"},
                                                            {FindingFormat::github, "github"},
                                                            {FindingFormat::sarif, "sarif"}});
}

// A finding and where its reader looks for it.
struct LocatedFinding {
  Finding finding;
  std::string file;
  SourcePosition position;
  Excerpt excerpt;
};

QXPlatform::Dictionary toJSON(const LocatedFinding& located);
// Four lines: what, the source, where in it, and what to write.
std::string toText(const LocatedFinding& located, bool inColor);
// A workflow command.
std::string toGitHub(const LocatedFinding& located);
// SARIF 2.1.0, all of them in one document.
QXPlatform::Dictionary toSARIF(const std::vector<LocatedFinding>& findings);

}  // namespace qx
