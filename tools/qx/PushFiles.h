#pragma once

#include <cstddef>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/notifications/PushLines.h"

namespace qx {

// The pushes of several files one after the other: standard input ("-") and .ndjson files hold one a line,
// any other file is one push. A file that cannot be read counts as one push, unreadable.
class PushFiles final : public platform::PushSource {
 public:
  // No names: standard input.
  explicit PushFiles(std::vector<std::string> names);

  std::optional<platform::PushText> next() override;

 private:
  std::optional<platform::PushText> open(const std::string& name);

  const std::vector<std::string> names_;
  std::size_t nextName_ = 0;
  std::ifstream file_;
  std::unique_ptr<platform::PushLineSource> lines_;
};

}  // namespace qx
