#include "tools/qx/carousel/FileWatch.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "QXPlatform/foundation/JSONTextError.h"

namespace qx {

namespace {

// Editors write a file in several goes.
constexpr std::chrono::milliseconds kSoon(60);
constexpr std::chrono::milliseconds kUntilWhole(300);
// What no watch tells of: a file system of another machine, a directory that came back.
constexpr std::chrono::seconds kRegularly(1);

std::optional<std::string> read(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream || std::filesystem::is_directory(file)) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

}  // namespace

FileWatch::FileWatch(std::string file, std::function<void(const std::optional<std::string>&)> changed)
    : file_(std::move(file)), changed_(std::move(changed)), told_(read(file_)), seen_(told_) {
  soon_.setSingleShot(true);
  QObject::connect(&soon_, &QTimer::timeout, &soon_, [this] { look(); });
  QObject::connect(&regularly_, &QTimer::timeout, &regularly_, [this] { look(); });
  const auto lookSoon = [this] { soon_.start(kSoon); };
  QObject::connect(&watcher_, &QFileSystemWatcher::fileChanged, &soon_, lookSoon);
  QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &soon_, lookSoon);
  regularly_.start(kRegularly);
  watch();
  changed_(told_);
}

void FileWatch::look() {
  watch();
  auto text = read(file_);
  const bool isWhole = text && !QXPlatform::findJSONTextError(*text);
  const bool isStill = text == std::exchange(seen_, text);
  if (text == told_) return;
  if (!isWhole && !isStill) return soon_.start(kUntilWhole);
  told_ = std::move(text);
  changed_(told_);
}

// A file that takes another's place is not the one that was watched.
void FileWatch::watch() {
  const auto directory = std::filesystem::absolute(file_).parent_path();
  for (const std::string& path : {file_, directory.string()}) watcher_.addPath(QString::fromStdString(path));
}

}  // namespace qx
