#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/notifications/PushLines.h"
#include "tools/qx/PushFiles.h"

namespace qx {

// Which push is spoken of.
struct PushPlace {
  std::string file;      // "-" is standard input
  std::size_t line = 1;  // where it begins
  bool isOneOfSeveral = false;
  std::string name = {};  // for a message: "pushes.ndjson: line 3"
};

struct PlacedPush {
  QXPlatform::PushText push;
  PushPlace place;
};

// The pushes of several files one after the other, each with its place. "-" is standard input, and a
// directory stands for its .json and .ndjson files. A file that cannot be read or has no push counts as one,
// unreadable.
class PlacedPushes {
 public:
  explicit PlacedPushes(const std::vector<std::string>& files);

  // Nothing at the end.
  std::optional<PlacedPush> next();

 private:
  // A file of pushes, or what cannot be looked into, and why.
  struct Part {
    std::string path;
    std::string unreadable;
  };

  static void listBelow(const std::string& directory, std::vector<Part>& parts);
  static std::vector<Part> partsOf(const std::string& directory);
  void begin(const Part& part);

  std::vector<Part> parts_;
  std::size_t begun_ = 0;
  std::optional<PushFiles> source_;  // of the part that was begun last
  std::optional<QXPlatform::PushText> following_;
  bool isOneOfSeveral_ = false;
};

}  // namespace qx
