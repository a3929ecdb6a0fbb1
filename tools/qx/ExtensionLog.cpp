#include "tools/qx/ExtensionLog.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/log/StandardError.h"

namespace qx {

namespace {

using QXPlatform::FileDescriptor;
using QXPlatform::LogType;

constexpr std::size_t kLongestLine = std::size_t{1} << 20;

std::optional<LogType> logTypeNamed(std::string_view name) {
  for (const auto type : {LogType::debug, LogType::default_, LogType::error, LogType::fault}) {
    if (QXPlatform::logTypeName(type) == name) return type;
  }
  return std::nullopt;
}

}  // namespace

QXPlatform::Result<std::unique_ptr<ExtensionLog>> ExtensionLog::open(QXPlatform::LogFormat shownAs,
                                                                     Listener listener) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return QXPlatform::Error{std::strerror(errno)};
  FileDescriptor read(ends[0]);
  FileDescriptor written(ends[1]);
  fcntl(read.get(), F_SETFL, O_NONBLOCK);
  FileDescriptor end(eventfd(0, EFD_CLOEXEC));
  if (!end.valid()) return QXPlatform::Error{std::strerror(errno)};
  return std::unique_ptr<ExtensionLog>(
      new ExtensionLog(std::move(read), std::move(written), std::move(end), shownAs, std::move(listener)));
}

ExtensionLog::ExtensionLog(FileDescriptor read, FileDescriptor written, FileDescriptor end,
                           QXPlatform::LogFormat shownAs, Listener listener)
    : read_(std::move(read)),
      written_(std::move(written)),
      end_(std::move(end)),
      shownAs_(shownAs),
      listener_(std::move(listener)),
      thread_([this] { passOn(); }) {}

ExtensionLog::~ExtensionLog() {
  eventfd_write(end_.get(), 1);
  thread_.join();
}

void ExtensionLog::passOn() {
  std::array<pollfd, 2> ready{{{read_.get(), POLLIN, 0}, {end_.get(), POLLIN, 0}}};
  do {
    poll(ready.data(), ready.size(), -1);
    while (readPiece()) {
    }
  } while (ready[1].revents == 0);
  if (!unread_.empty()) takeLine(unread_);
}

bool ExtensionLog::readPiece() {
  std::array<char, 16'384> piece;
  const auto count =
      QXPlatform::retryInterrupted([&] { return read(read_.get(), piece.data(), piece.size()); });
  if (count <= 0) return false;
  unread_.append(piece.data(), static_cast<std::size_t>(count));
  std::size_t begin = 0;
  for (std::size_t end; (end = unread_.find('\n', begin)) != std::string::npos; begin = end + 1) {
    takeLine(std::string_view(unread_).substr(begin, end - begin));
  }
  unread_.erase(0, begin);
  if (unread_.size() > kLongestLine) takeLine(std::exchange(unread_, {}));
  return true;
}

void ExtensionLog::takeLine(std::string_view line) const {
  const auto parsed = QXPlatform::parseJSON(line);
  const auto type = parsed ? logTypeNamed((*parsed)["type"].string().value_or("")) : std::nullopt;
  if (!type) return QXPlatform::writeToStandardError(std::string(line) + "\n");
  const auto text = [&](const char* key) { return (*parsed)[key].string().value_or(""); };
  const QXPlatform::LogRecord record{text("subsystem"), text("category"), *type, text("message")};
  const auto push = (*parsed)["push"].string();
  listener_(record, push ? std::optional<std::string>(*push) : std::nullopt);
  const bool asItCame = shownAs_ == QXPlatform::LogFormat::json;
  QXPlatform::writeToStandardError(asItCame ? std::string(line) + "\n"
                                            : QXPlatform::logLine(record, QXPlatform::LogFormat::text));
}

}  // namespace qx
