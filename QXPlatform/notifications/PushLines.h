#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace QXPlatform {

// A push over the air has 4 KiB; a thousand times that is a mistake.
inline constexpr std::size_t kLongestPush = std::size_t{4} * 1024 * 1024;
// Such a push sent on as a full request nests two levels deeper, holds the alert twice and may write its
// numbers in more digits.
inline constexpr std::size_t kLongestFullRequest = 4 * kLongestPush;
inline constexpr JSONLimits kFullRequestLimits{kJSONWritingDepthLimit, 2 * kJSONTreeLimit};

// One push as text, and where it stood.
struct PushText {
  std::string text;
  std::size_t line;                 // counted from 1
  std::string source;               // names the file in an error; empty for the only one
  std::optional<Error> unreadable;  // in place of a text
  RequestNaming naming = {};
};

// One that has been answered.
struct AnsweredPush {
  const PushText& push;
  std::size_t position;  // in the source, from 0
  const Result<Dictionary>& answer;
};

// The answer; of what ended in an error {"line": N, "error": "..."}, and with "file" when the source has a
// name.
Dictionary answerToJSON(const AnsweredPush& answered);

// Hands out pushes one after the other; called on one thread at a time.
class PushSource {
 public:
  virtual ~PushSource() = default;
  // Nothing at the end.
  virtual std::optional<PushText> next() = 0;
};

// One push a line. Blank lines are skipped but counted; one of more than the limit is unreadable.
class PushLineSource final : public PushSource {
 public:
  explicit PushLineSource(std::istream& input, std::string name = {}, std::size_t limit = kLongestPush);

  std::optional<PushText> next() override;

 private:
  PushText readLine();
  // Takes up to a newline, which goes too; returns how far it came.
  enum class Taken { line, part, nothing };
  Taken takePart(std::string& text);

  std::istream& input_;
  const std::string name_;
  const std::size_t limit_;
  std::size_t line_ = 0;
  std::array<char, 16384> buffer_;
};

// Called once with what is answered to a push, at once or later, on any thread. An error takes its place.
using PushCompletion = std::function<void(Result<Dictionary>)>;

// How a batch of pushes is answered.
struct PushAnswering {
  // Answers one push. Called for up to `jobs` pushes at once, on any thread; but all on the thread that calls
  // answerPushes() as long as there is one job whose answers come at once.
  std::function<void(const std::shared_ptr<const UNNotificationRequest>&, PushCompletion)> answer;
  std::size_t jobs = 1;
  JSONLimits limits = {};  // of a push's text
  // Appends the text that is written for an answer, compact JSON of it without this. Called on several
  // threads at once.
  std::function<void(std::string&, const AnsweredPush&)> present = {};
  bool inOrder = true;  // of the source; else each answer is written when it is there
  // Called after each answer with the number of pushes answered so far; one call at a time.
  std::function<void(std::size_t)> progress;
};

struct PushAnswers {
  std::size_t errors = 0;     // pushes that ended in an error
  bool outputFailed = false;  // answers were lost
};

// Writes one answer a push, each as soon as it and, in order, all before it are there. No thread waits for an
// answer: the one that brings it takes the next push.
//
// Stops taking pushes when the output fails.
PushAnswers answerPushes(PushSource& source, std::ostream& output, const PushAnswering& answering);

}  // namespace QXPlatform
