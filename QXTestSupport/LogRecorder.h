#pragma once

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/log/Log.h"
#include "QXTestSupport/Patience.h"

namespace QXTestSupport {

// One logged message, with a copy of all its parts.
struct LogEntry {
  std::string subsystem;
  std::string category;
  QXPlatform::LogType type;
  std::string message;

  friend bool operator==(const LogEntry&, const LogEntry&) = default;
};

// Keeps what the process logs. Any thread may log and ask.
class RecordingLogSink final : public QXPlatform::LogSink {
 public:
  void write(const QXPlatform::LogRecord& record) override {
    const std::lock_guard lock(mutex_);
    entries_.push_back({std::string(record.subsystem), std::string(record.category), record.type,
                        std::string(record.message)});
    changed_.notify_all();
  }

  std::vector<LogEntry> entries() const {
    const std::lock_guard lock(mutex_);
    return entries_;
  }
  std::vector<std::string> messages() const {
    std::vector<std::string> messages;
    for (const LogEntry& entry : entries()) messages.push_back(entry.message);
    return messages;
  }
  // Each as "<type> <category>: <message>".
  std::vector<std::string> lines() const {
    std::vector<std::string> lines;
    for (const LogEntry& entry : entries()) {
      lines.push_back(std::string(QXPlatform::logTypeName(entry.type)) + " " + entry.category + ": " +
                      entry.message);
    }
    return lines;
  }
  // Whether a message was logged; compares whole messages.
  bool has(std::string_view message) const {
    const std::lock_guard lock(mutex_);
    return std::ranges::find(entries_, message, &LogEntry::message) != entries_.end();
  }
  // Whether a text occurs in any message, for instance a secret that must not.
  bool mentions(std::string_view text) const {
    const std::lock_guard lock(mutex_);
    return std::ranges::any_of(
        entries_, [&](const LogEntry& entry) { return entry.message.find(text) != std::string::npos; });
  }
  // Blocks until the message is logged; false when it does not come.
  bool waitFor(std::string_view message) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_until(lock, soon(), [&] {
      return std::ranges::find(entries_, message, &LogEntry::message) != entries_.end();
    });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<LogEntry> entries_;
};

// Keeps what the process logs while this lives.
//
//   QXTestSupport::ScopedLogRecorder log;
//   ...
//   EXPECT_TRUE(log->has("text"));
class ScopedLogRecorder {
 public:
  const RecordingLogSink* operator->() const { return &sink_; }

 private:
  RecordingLogSink sink_;
  QXPlatform::ScopedLogSink scope_{sink_};
};

}  // namespace QXTestSupport
