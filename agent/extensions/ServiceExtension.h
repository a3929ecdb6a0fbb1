#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "agent/extensions/Program.h"
#include "agent/loop/EventLoop.h"

namespace QXAgent {

// What a service extension may hold in memory, in bytes.
extern const std::size_t kExtensionMemory;

// The app's service extension: one program, started when there is something to ask, kept for a while.
class ServiceExtension {
 public:
  enum class End {
    answered,
    refused,  // no program, or what was asked is none of its business
    late,     // no answer within the time limit
    died,     // it ended with the request in hand
  };
  struct Outcome {
    End end;
    QXPlatform::Dictionary answer;  // when it answered
    std::string problem;            // when it did not
  };
  using Completion = std::function<void(Outcome)>;
  using Starter = std::function<QXPlatform::Result<StartedProgram>()>;

  // A program whose process is known is ended when it holds more than kExtensionMemory. `ended` is called
  // whenever none runs any more.
  ServiceExtension(EventLoop& loop, Starter start, std::function<void()> ended);
  ~ServiceExtension();

  // Calls back once, at once when no program can be started.
  // REQUIRES: `request` has an identifier that none in hand has.
  void ask(const QXPlatform::Dictionary& request, Completion completion);
  // Whether a program of it runs, perhaps only to send receipts.
  bool isRunning() const { return !runs_.empty(); }
  // Lets what runs finish what it has in hand, and exit.
  void retire();

 private:
  class Run;

  void removeEnded();

  EventLoop& loop_;
  const Starter start_;
  const std::function<void()> ended_;
  std::list<std::unique_ptr<Run>> runs_;  // all but the last only end
  Timer sweep_;
};

}  // namespace QXAgent
