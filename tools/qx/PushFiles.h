#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <istream>
#include <memory>
#include <optional>
#include <streambuf>
#include <string>
#include <vector>

#include "QXPlatform/notifications/PushLines.h"

namespace qx {

// The pushes of several files one after the other: .ndjson files hold one a line, any other file is one push,
// and standard input ("-") is whichever it looks like. A file that cannot be read counts as one push,
// unreadable.
class PushFiles final : public QXPlatform::PushSource {
 public:
  // No names: standard input.
  explicit PushFiles(std::vector<std::string> names);

  std::optional<QXPlatform::PushText> next() override;

  // What part of the input the first `answered` pushes make up, as their average size has it; nothing when
  // the size of the whole is not known. Any thread.
  std::optional<double> partOf(std::size_t answered) const;

 private:
  std::optional<QXPlatform::PushText> nextUncounted();
  std::optional<QXPlatform::PushText> open(const std::string& name);
  std::optional<QXPlatform::PushText> openStandardInput(const std::string& shownName);

  const std::vector<std::string> names_;
  const std::optional<std::uintmax_t> size_;
  std::atomic<std::uintmax_t> sizeTaken_ = 0;
  std::atomic<std::size_t> taken_ = 0;
  std::size_t nextName_ = 0;
  std::ifstream file_;
  std::unique_ptr<std::streambuf> readAgain_;
  std::istream readAgainInput_{nullptr};
  std::unique_ptr<QXPlatform::PushLineSource> lines_;
};

}  // namespace qx
