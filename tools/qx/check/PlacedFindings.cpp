#include "tools/qx/check/PlacedFindings.h"

#include <string>
#include <utility>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/notifications/NotificationRecords.h"
#include "tools/qx/PushDocument.h"
#include "tools/qx/check/Hints.h"
#include "tools/qx/check/Places.h"
#include "tools/qx/check/PushChecks.h"
#include "tools/qx/check/SyntaxCheck.h"

namespace qx {

namespace {

// What a person reads and a machine holds of one push; each finding is looked for in its text.
constexpr std::size_t kMostFindings = 500;

// The text of one push, and where in a file it stands.
struct Source {
  std::string_view text;
  const PushPlace& place;
};

LocatedFinding locate(Finding finding, const Source& source, std::size_t offset) {
  SourcePosition position = positionOf(source.text, offset);
  position.line += source.place.line - 1;
  return {std::move(finding), source.place.file, position, excerptAround(source.text, offset)};
}

// What a place in the push's text is called by a finding: one in the userInfo, or in words.
Finding replaced(const ReplacedMember& member, std::string_view root) {
  constexpr std::string_view kMessage = "ignored: the key comes again, and the last one counts";
  Finding finding{Finding::Severity::warning, "", std::string(kMessage), "take one of them out", ""};
  const std::string_view pointer = member.pointer;
  if (pointer.starts_with(root) && pointer.substr(root.size()).starts_with('/')) {
    finding.at = pointer.substr(root.size());
  } else {
    finding.message = member.pointer + ": " + finding.message;
  }
  return finding;
}

Finding atTheWhole(std::string message, std::string hint) {
  return {Finding::Severity::error, "", std::move(message), std::move(hint), ""};
}

Finding unlisted(std::size_t count) {
  return {Finding::Severity::warning, "", "and " + std::to_string(count) + " more findings", "", ""};
}

// Every member for which a full request is none.
std::vector<LocatedFinding> wrongMembers(const Source& source) {
  const auto push = QXPlatform::parseJSON(source.text);
  const auto members = push ? push->dictionary() : std::nullopt;
  if (!members || members->contains("aps") || !members->contains("content")) return {};
  std::vector<LocatedFinding> located;
  for (const auto& error : QXPlatform::decodingErrors<QXPlatform::RequestRecord>(*push)) {
    if (located.size() == kMostFindings) break;
    const std::string& pointer = error.path.text();
    located.push_back(locate(atTheWhole(error.description(), hintFor(error, valueAt(*push, pointer))), source,
                             offsetOf(source.text, pointer)));
  }
  return located;
}

// What keeps a text from being a push at all: its JSON, or the members that make a push.
std::vector<LocatedFinding> whyNoPush(const Source& source, const QXPlatform::Error& reason) {
  if (auto syntax = findSyntaxProblem(source.text)) {
    return {locate(atTheWhole(std::move(syntax->message), std::move(syntax->hint)), source, syntax->offset)};
  }
  auto located = wrongMembers(source);
  if (!located.empty()) return located;
  const std::string& message = reason.message;
  const std::string_view pointer = std::string_view(message).substr(0, message.find(": "));
  const bool hasPlace = message.starts_with('/');
  return {locate(atTheWhole(message, ""), source, offsetOf(source.text, hasPlace ? pointer : ""))};
}

}  // namespace

std::vector<LocatedFinding> findPlaced(std::string_view text, const PushPlace& place, PushLimit limit) {
  const Source source{text, place};
  const auto push = PushDocument::parse(text);
  if (!push) return whyNoPush(source, push.error());
  std::vector<LocatedFinding> located;
  std::size_t left = 0;
  for (Finding& finding : checkPush(*push, limit)) {
    if (located.size() == kMostFindings) {
      ++left;
      continue;
    }
    const std::size_t offset = offsetOf(text, finding.source);
    located.push_back(locate(std::move(finding), source, offset));
  }
  for (const ReplacedMember& member : findReplacedMembers(text)) {
    if (located.size() == kMostFindings) {
      ++left;
      continue;
    }
    located.push_back(locate(replaced(member, push->userInfoPath()), source, member.offset));
  }
  if (left > 0) located.push_back(locate(unlisted(left), source, 0));
  return located;
}

LocatedFinding unreadableFile(const PushPlace& place, const QXPlatform::Error& reason) {
  const std::string prefix = place.file + ": ";
  const std::size_t named = reason.message.starts_with(prefix) ? prefix.size() : 0;
  return {atTheWhole(reason.message.substr(named), ""), place.file, {place.line, 1}, {}};
}

}  // namespace qx
