#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <future>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"

namespace qx {

// A host's own service-extension program, running. Requests go to its standard input, one a line. Its answers
// are told apart by their identifiers, of which equal ones are answered in order, and its refusals by the
// lines that they name. Whatever else it prints goes to this process's standard error, as its own standard
// error does.
class ExtensionProcess {
 public:
  static QXPlatform::Result<std::unique_ptr<ExtensionProcess>> start(
      const std::filesystem::path& program, const std::vector<std::string>& arguments);
  // As finish().
  ~ExtensionProcess();
  ExtensionProcess(const ExtensionProcess&) = delete;
  ExtensionProcess& operator=(const ExtensionProcess&) = delete;

  // Blocks until the program has answered. An error when it refuses the request or ends first; when it takes
  // longer than `limit`, or prints 64 MiB without a line break, it is ended. Any thread, several at once.
  // REQUIRES: `request` has an "identifier".
  QXPlatform::Result<QXPlatform::Dictionary> ask(const QXPlatform::Dictionary& request,
                                                 std::chrono::duration<double> limit);

  // Ends the program's input and waits for it to exit, as long as work in flight may take; then ends it. An
  // error when it did not exit in good order, which exit code 1 is after a refusal. To be called when no
  // ask() is in progress.
  std::optional<QXPlatform::Error> finish();

 private:
  using Answer = QXPlatform::Result<QXPlatform::Dictionary>;
  struct Question {
    std::string identifier;
    std::int64_t line;
    std::promise<Answer> answer;
  };

  ExtensionProcess(pid_t process, int input, int output);

  // Nothing when the program has ended. REQUIRES: the caller holds inputMutex_.
  std::optional<std::future<Answer>> enqueue(std::string identifier);
  // Gives up at the deadline, and when the program is gone. REQUIRES: the caller holds inputMutex_.
  void writeLine(std::string_view line, std::chrono::steady_clock::time_point deadline);
  void readAnswers();
  void end(std::string_view reason);
  void takeLine(std::string_view line);
  bool takeResult(const QXPlatform::Dictionary& reply);
  bool takeRefusal(const QXPlatform::Dictionary& reply);
  template <typename Condition>
  bool answerFirst(const Condition& isMeant, Answer answer);
  void failAll();
  // Returns whether it came to that by itself. The process keeps its id until it is reaped.
  bool waitForExit() const;
  std::optional<QXPlatform::Error> judgeExit(int status) const;

  const pid_t process_;
  const int output_;
  std::mutex inputMutex_;   // taken before questionsMutex_
  int input_;               // guarded by inputMutex_
  std::int64_t lines_ = 0;  // guarded by inputMutex_
  std::mutex questionsMutex_;
  std::list<Question> questions_;  // guarded by questionsMutex_
  bool ended_ = false;             // guarded by questionsMutex_
  std::atomic<bool> hasRefused_ = false;
  bool finished_ = false;
  std::atomic<bool> stopReading_ = false;
  std::thread reader_;
};

}  // namespace qx
