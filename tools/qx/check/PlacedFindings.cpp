#include "tools/qx/check/PlacedFindings.h"

#include <string>
#include <utility>

#include "tools/qx/PushDocument.h"
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

}  // namespace

std::vector<LocatedFinding> findPlaced(std::string_view text, const PushPlace& place, PushLimit limit) {
  const Source source{text, place};
  const auto push = PushDocument::parse(text);
  if (!push) return {whyNoPush(source, push.error())};
  std::vector<LocatedFinding> located;
  for (Finding& finding : checkPush(*push, limit)) {
    const std::size_t offset = offsetOf(text, finding.source);
    located.push_back(locate(std::move(finding), source, offset));
  }
  return located;
}

}  // namespace qx
