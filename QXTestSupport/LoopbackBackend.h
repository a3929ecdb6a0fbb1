#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace QXTestSupport {

// An HTTP server on 127.0.0.1 that stands for the back end: it takes delivery receipts, serves images for
// carousels under /files/ (sunrise.png, forest.png, ocean.png, night.png), and remembers what it was asked.
// Any thread.
class LoopbackBackend {
 public:
  // One request, as it was sent.
  struct Request {
    std::string method;
    std::string path;  // with the query
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
  };

  // Listens on a free port when it returns, and answers 200 with an empty JSON object. Throws
  // std::runtime_error when no port can be had.
  LoopbackBackend();
  ~LoopbackBackend();
  LoopbackBackend(const LoopbackBackend&) = delete;
  LoopbackBackend& operator=(const LoopbackBackend&) = delete;

  // "http://127.0.0.1:40123" and the path, which begins with a slash or is empty.
  std::string url(std::string_view path = "") const;
  // The answer from now on to every request outside /files/.
  void answer(int status, std::string body = "{}");

  // In the order of arrival.
  std::vector<Request> requests() const;
  // Blocks until so many have come; false when they do not come.
  bool waitForRequests(std::size_t count) const;

 private:
  class State;

  std::unique_ptr<State> state_;
};

}  // namespace QXTestSupport
