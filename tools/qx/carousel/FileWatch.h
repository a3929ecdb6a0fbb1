#pragma once

#include <QFileSystemWatcher>
#include <QTimer>
#include <functional>
#include <optional>
#include <string>

namespace qx {

// Follows what a file holds: written in place or replaced by another, gone and back again. Main thread.
class FileWatch {
 public:
  // Calls `changed` with the text that the file holds now, and whenever it has come to hold another; with
  // nothing when it is not there. A text that is no JSON is given time to be written to its end.
  FileWatch(std::string file, std::function<void(const std::optional<std::string>&)> changed);

 private:
  void look();
  void watch();

  const std::string file_;
  const std::function<void(const std::optional<std::string>&)> changed_;
  std::optional<std::string> told_;
  std::optional<std::string> seen_;
  QFileSystemWatcher watcher_;
  QTimer soon_;
  QTimer regularly_;
};

}  // namespace qx
