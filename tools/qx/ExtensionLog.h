#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/log/Log.h"
#include "QXPlatform/log/LogOutput.h"

namespace qx {

// What a host's own program writes to its standard error, looked at on its way to this process's: the program
// is to log JSON, which is shown in the format that the user wants. Any other line goes through as it is.
class ExtensionLog {
 public:
  // Hears of each log line, with the identifier of its push. On a thread of its own.
  using Listener = std::function<void(const QXPlatform::LogRecord&, const std::optional<std::string>&)>;

  static QXPlatform::Result<std::unique_ptr<ExtensionLog>> open(QXPlatform::LogFormat shownAs,
                                                                Listener listener);
  // Returns when all that has been written is through, whoever holds the other end.
  ~ExtensionLog();
  ExtensionLog(const ExtensionLog&) = delete;
  ExtensionLog& operator=(const ExtensionLog&) = delete;

  // For the program's standard error.
  int descriptor() const { return written_.get(); }

 private:
  ExtensionLog(QXPlatform::FileDescriptor read, QXPlatform::FileDescriptor written,
               QXPlatform::FileDescriptor end, QXPlatform::LogFormat shownAs, Listener listener);

  void passOn();
  // Returns whether there was anything.
  bool readPiece();
  void takeLine(std::string_view line) const;

  const QXPlatform::FileDescriptor read_;
  const QXPlatform::FileDescriptor written_;
  const QXPlatform::FileDescriptor end_;  // readable when no more comes
  const QXPlatform::LogFormat shownAs_;
  const Listener listener_;
  std::string unread_;
  std::thread thread_;
};

}  // namespace qx
