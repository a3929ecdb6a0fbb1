#pragma once

#include <string_view>

#include "QXPlatform/log/Log.h"

namespace QXExtensionSDK {

// Writes one message line. Called from any thread, several at once.
class LogPrinter {
 public:
  virtual ~LogPrinter() = default;
  virtual void print(std::string_view message, QXPlatform::LogType type, std::string_view subsystem,
                     std::string_view category) const = 0;
};

// Writes to the platform's unified log; the whole message is public.
class OSLogPrinter final : public LogPrinter {
 public:
  void print(std::string_view message, QXPlatform::LogType type, std::string_view subsystem,
             std::string_view category) const override {
    QXPlatform::os_log({subsystem, category, type, message});
  }
};

}  // namespace QXExtensionSDK
