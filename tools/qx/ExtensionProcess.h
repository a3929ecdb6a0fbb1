#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstddef>
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

#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

namespace qx {

// A host's own service-extension program, running. Requests go to its standard input, one a line, and its
// answers are told apart by their identifiers. Whatever else it prints goes to this process's standard error,
// as its own standard error does.
class ExtensionProcess {
 public:
  static platform::Result<std::unique_ptr<ExtensionProcess>> start(const std::filesystem::path& program,
                                                                   const std::vector<std::string>& arguments);
  // As finish().
  ~ExtensionProcess();
  ExtensionProcess(const ExtensionProcess&) = delete;
  ExtensionProcess& operator=(const ExtensionProcess&) = delete;

  // Blocks until the program has answered. An error when it ends first; when it takes longer than `limit` it
  // is ended. Any thread, several at once. REQUIRES: `request` has an "identifier".
  platform::Result<platform::Dictionary> ask(const platform::Dictionary& request,
                                             std::chrono::duration<double> limit);

  // Ends the program's input and waits for it to exit, as long as work in flight may take; then ends it. An
  // error when it did not exit in good order. To be called when no ask() is in progress.
  std::optional<platform::Error> finish();

 private:
  using Answer = platform::Result<platform::Dictionary>;
  struct Question {
    std::string identifier;
    std::promise<Answer> answer;
  };

  ExtensionProcess(pid_t process, int input, int output);

  // Gives up at the deadline, and when the program is gone.
  void writeLine(std::string_view line, std::chrono::steady_clock::time_point deadline);
  void readAnswers();
  void takeLine(std::string_view line);
  void failAll();
  std::optional<platform::Error> waitForExit();

  const pid_t process_;
  const int output_;
  std::mutex inputMutex_;
  int input_;  // guarded by inputMutex_
  std::mutex questionsMutex_;
  std::list<Question> questions_;  // guarded by questionsMutex_
  bool ended_ = false;             // guarded by questionsMutex_
  bool finished_ = false;
  std::atomic<bool> stopReading_ = false;
  std::thread reader_;
};

}  // namespace qx
