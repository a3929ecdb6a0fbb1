#include "tools/qx/NamedPushes.h"

#include <utility>

#include "tools/qx/Stable.h"

namespace qx {

NamedPushes::NamedPushes(QXPlatform::PushSource& source, std::optional<std::string> identifier, bool counts)
    : source_(source), identifier_(std::move(identifier)), counts_(counts) {}

std::optional<QXPlatform::PushText> NamedPushes::next() {
  auto push = identifier_ ? takeAhead() : source_.next();
  if (!push) return push;
  ++taken_;
  if (counts_) push->naming.otherwise = countedIdentifier(taken_);
  if (identifier_) {
    const bool isAlone = taken_ == 1 && !following_;
    push->naming.identifier = isAlone ? *identifier_ : *identifier_ + "-" + std::to_string(taken_);
  }
  return push;
}

std::optional<QXPlatform::PushText> NamedPushes::takeAhead() {
  auto push = taken_ == 0 ? source_.next() : std::exchange(following_, std::nullopt);
  if (push) following_ = source_.next();
  return push;
}

}  // namespace qx
