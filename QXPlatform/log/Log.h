#pragma once

#include <cstdint>
#include <string_view>

namespace QXPlatform {

enum class LogType : std::uint8_t { debug, default_, error, fault };

// "debug", "default", "error" or "fault".
std::string_view logTypeName(LogType type);

// One line of the unified log. The views are valid during the call that passes the record only.
struct LogRecord {
  std::string_view subsystem;
  std::string_view category;
  LogType type;
  std::string_view message;
};

// Where log records end up. write() is called from any thread, also from several at once, and never with a
// lock held.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void write(const LogRecord& record) = 0;
};

// Writes one record to the installed sink; without one, to the journal when the process runs under it, else
// as one line on standard error, "time [type] subsystem category: message". Line breaks and other control
// characters are escaped there, so a message never breaks the line. Any thread.
void os_log(const LogRecord& record);

// Directs every record of the process to a sink for as long as this object lives; the innermost one counts.
// The sink must outlive it. On destruction, waits for calls in progress. REQUIRES: scopes end in the reverse
// of the order in which they began, and not inside a call of their own sink.
class ScopedLogSink {
 public:
  explicit ScopedLogSink(LogSink& sink);
  ~ScopedLogSink();
  ScopedLogSink(const ScopedLogSink&) = delete;
  ScopedLogSink& operator=(const ScopedLogSink&) = delete;

 private:
  friend void os_log(const LogRecord& record);

  LogSink& sink_;
  ScopedLogSink* outer_;
  int callsInProgress_ = 0;
};

}  // namespace QXPlatform
