#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/log/Log.h"
#include "QXPlatform/notifications/PushLines.h"
#include "tools/qx/JUnit.h"

namespace qx {

// What a run may be told to fail on.
enum class PushFailure : std::uint8_t { expired, noAttachment, logError };
constexpr auto rawValues(QXPlatform::RawValuesOf<PushFailure>) {
  return std::to_array<QXPlatform::RawCase<PushFailure>>({{PushFailure::expired, "expired"},
                                                          {PushFailure::noAttachment, "no-attachment"},
                                                          {PushFailure::logError, "log-error"}});
}

// Whether it is this system's push, with a carousel whose first panel has an image or one that was not
// inflated.
bool asksForThumbnail(const QXPlatform::Dictionary& userInfo);

// Judges the pushes of a run by what is to count as a failure. Any thread.
class PushVerdicts {
 public:
  explicit PushVerdicts(std::vector<PushFailure> failOn) : failOn_(std::move(failOn)) {}

  bool failsOn(PushFailure failure) const;

  void note(const QXPlatform::AnsweredPush& answered, const std::string& name);
  // A log line that was written for the push of that identifier, or for none.
  void note(const QXPlatform::LogRecord& record, const std::optional<std::string>& identifier);

  // In the order of the input. What was logged for no push is held against the last one, which it came with
  // or after.
  std::vector<TestCase> testCases() const;

 private:
  struct Verdict {
    TestCase test;
    std::string identifier;
  };

  const std::vector<PushFailure> failOn_;
  mutable std::mutex mutex_;
  // Below, guarded by mutex_.
  std::map<std::size_t, Verdict> verdicts_;         // by position
  std::multimap<std::string, std::string> logged_;  // by identifier, empty for none
};

// Lets the verdicts see what is logged on its way to another sink.
class JudgedLog final : public QXPlatform::LogSink {
 public:
  JudgedLog(QXPlatform::LogSink& next, PushVerdicts& verdicts) : next_(next), verdicts_(verdicts) {}
  void write(const QXPlatform::LogRecord& record) override;

 private:
  QXPlatform::LogSink& next_;
  PushVerdicts& verdicts_;
};

}  // namespace qx
