#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "agent/extensions/Program.h"

namespace QXAgent {

// The conversation with a service-extension program. Requests go to its standard input, one a line; its
// answers come in any order and are told apart by their identifiers, its refusals by the lines that they
// name. Nothing here blocks. For one thread, or one at a time.
class ExtensionProcess {
 public:
  using Answer = QXPlatform::Result<QXPlatform::Dictionary>;
  using Completion = std::function<void(Answer)>;

  // `chatter` gets, line by line, whatever else the program prints.
  ExtensionProcess(StartedProgram started, std::function<void(std::string_view)> chatter);
  ~ExtensionProcess() = default;
  ExtensionProcess(const ExtensionProcess&) = delete;
  ExtensionProcess& operator=(const ExtensionProcess&) = delete;

  // Calls back once, from handleEvents(), with the answer, or an error when the program refuses the request
  // or ends before it has answered; at once when the request cannot be written; not after this object is
  // gone. REQUIRES: !hasEnded(); `request` has an "identifier" that no request in hand has.
  void ask(const QXPlatform::Dictionary& request, Completion completion);
  std::size_t inHand() const { return questions_.size(); }
  bool hasRefused() const { return hasRefused_; }
  // Whether it ended without an answer to each request.
  bool owesAnswers() const { return owesAnswers_; }

  // Readable when handleEvents() has something to do.
  int descriptor() const { return poll_.get(); }
  // `completion`s may call ask(), but not end this object's life.
  void handleEvents();

  // No more requests: the program does what it has in hand, and exits.
  void closeInput();
  // Ends the program; the reason is what those in hand are answered with.
  void end(std::string reason);
  // Waits no more for what it has in hand. REQUIRES: end() was called, and has had no effect.
  void abandon() { failAll(); }
  // Why it was ended, when it was.
  const std::optional<std::string>& endReason() const { return endReason_; }
  // No more answers come.
  bool hasEnded() const { return ended_; }
  bool hasExited() const { return exited_; }
  Program& program() { return *program_; }

 private:
  struct Question {
    std::int64_t line;
    Completion completion;
  };

  void watch(int descriptor, std::uint32_t events) const;
  void writePending();
  // Returns whether there was anything.
  bool readAnswers();
  void takeLine(std::string_view line);
  bool takeResult(const QXPlatform::Dictionary& reply);
  bool takeRefusal(const QXPlatform::Dictionary& reply);
  void failAll();

  const std::unique_ptr<Program> program_;
  std::optional<QXPlatform::FileDescriptor> input_;
  const QXPlatform::FileDescriptor output_;
  const QXPlatform::FileDescriptor poll_;
  const std::function<void(std::string_view)> chatter_;
  std::map<std::string, Question, std::less<>> questions_;
  std::int64_t lines_ = 0;
  std::string unwritten_;
  std::string unread_;
  std::optional<std::string> endReason_;
  bool closing_ = false;
  bool hasRefused_ = false;
  bool owesAnswers_ = false;
  bool ended_ = false;
  bool exited_ = false;
};

}  // namespace QXAgent
