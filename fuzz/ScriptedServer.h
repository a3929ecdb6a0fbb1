#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "QXPlatform/files/FileDescriptor.h"

namespace QXFuzz {

// Listens on the loopback interface, and answers whatever it is asked with the same bytes, which need be no
// HTTP at all; then it hangs up. One thread serves one connection at a time.
class ScriptedServer {
 public:
  ScriptedServer();
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  // "http://127.0.0.1:40123"
  std::string url() const;
  // From the next connection on.
  void answer(std::string_view bytes);

 private:
  void serve();
  void converse(int connection);

  QXPlatform::FileDescriptor listener_;
  std::mutex mutex_;
  std::string answer_;  // guarded by mutex_
  std::thread thread_;
};

}  // namespace QXFuzz
