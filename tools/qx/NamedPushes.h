#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "QXPlatform/notifications/PushLines.h"

namespace qx {

// The pushes of another source with the names that the user gives them.
class NamedPushes final : public QXPlatform::PushSource {
 public:
  // With an identifier every push has it, of several each with its number behind it; which is why one push
  // is then read ahead. `counts`: those without a name of their own are called by their number.
  NamedPushes(QXPlatform::PushSource& source, std::optional<std::string> identifier, bool counts);

  std::optional<QXPlatform::PushText> next() override;

 private:
  std::optional<QXPlatform::PushText> takeAhead();

  QXPlatform::PushSource& source_;
  const std::optional<std::string> identifier_;
  const bool counts_;
  std::optional<QXPlatform::PushText> following_;
  std::size_t taken_ = 0;
};

}  // namespace qx
