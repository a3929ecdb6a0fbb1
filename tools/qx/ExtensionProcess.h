#pragma once

#include <sys/types.h>

#include <deque>
#include <filesystem>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

namespace qx {

// A host's own service-extension program, running. Requests go to its standard input, answers come back in
// the same order; its standard error is this process's.
class ExtensionProcess {
 public:
  static platform::Result<std::unique_ptr<ExtensionProcess>> start(const std::filesystem::path& program,
                                                                   const std::vector<std::string>& arguments);
  // Ends the program's input and waits for it to exit.
  ~ExtensionProcess();
  ExtensionProcess(const ExtensionProcess&) = delete;
  ExtensionProcess& operator=(const ExtensionProcess&) = delete;

  // Blocks until the program has answered; an error when it ends first. Any thread, several at once.
  platform::Result<platform::Dictionary> ask(const platform::Dictionary& request);

 private:
  using Answer = platform::Result<platform::Dictionary>;

  ExtensionProcess(pid_t process, int input, int output);

  bool writeLine(std::string line);
  void readAnswers();
  void failWaiting();

  const pid_t process_;
  int input_;  // guarded by mutex_
  const int output_;
  std::mutex mutex_;
  std::deque<std::promise<Answer>> waiting_;  // guarded by mutex_
  bool ended_ = false;                        // guarded by mutex_
  std::thread reader_;
};

}  // namespace qx
