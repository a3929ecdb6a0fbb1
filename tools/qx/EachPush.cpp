#include "tools/qx/EachPush.h"

#include <iostream>

#include "tools/qx/PushFiles.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

using QXPlatform::Error;
using QXPlatform::Result;

Result<PushDocument> read(const QXPlatform::PushText& push) {
  if (push.unreadable) return *push.unreadable;
  return PushDocument::parse(push.text);
}

// A file that cannot be opened is named in the reason already.
std::string withPlace(const PushPlace& place, const Error& error) {
  return error.message.starts_with(place.name + ": ") ? error.message : place.name + ": " + error.message;
}

}  // namespace

int forEachPush(std::string_view command, const std::string& file,
                const std::function<bool(const PushDocument& push, const PushPlace& place)>& handle) {
  const std::string shownName = file == "-" ? "standard input" : file;
  PushFiles source({file});
  auto push = source.next();
  if (!push) return fail(command, shownName + ": no push");
  int exitCode = 0;
  bool several = false;
  while (push && std::cout) {
    auto following = source.next();
    several = several || following;
    PushPlace place{shownName, std::nullopt};
    if (several) place.line = push->line;
    if (several) place.name += ": line " + std::to_string(push->line);
    const auto document = read(*push);
    if (!document) exitCode = fail(command, withPlace(place, document.error()));
    if (document && !handle(*document, place)) exitCode = 1;
    push = std::move(following);
  }
  return exitCode;
}

int printEachChanged(
    const SimulatorOptions& simulator, std::string_view command, const std::string& file,
    const std::function<Result<QXPlatform::Dictionary>(const QXPlatform::Dictionary&)>& change,
    const std::function<void(const PushPlace& place, const QXPlatform::Dictionary& before,
                             const QXPlatform::Dictionary& after)>& report) {
  return forEachPush(command, file, [&](const PushDocument& push, const PushPlace& place) {
    const auto userInfo = change(push.userInfo());
    if (!userInfo) {
      fail(command, place.name + ": " + userInfo.error().message);
      return false;
    }
    printResult(simulator, push.replacingUserInfo(*userInfo));
    if (report) report(place, push.userInfo(), *userInfo);
    return true;
  });
}

}  // namespace qx
