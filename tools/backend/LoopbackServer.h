#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/backend/HTTPMessages.h"

namespace backend {

struct LoopbackServerOptions {
  std::uint16_t port = 0;  // 0: a free one

  // The answer to every request outside /files/.
  int status = 200;
  std::string body = "{}";
  std::string contentType = "application/json";
  std::vector<Header> headers = {};

  // How every request is treated, those under /files/ too.
  std::chrono::milliseconds delay{0};
  bool hang = false;   // never answers
  bool close = false;  // drops the connection without an answer

  // Served under /files/; without one the built-in panels: /files/sunrise.png and so on (see Panels.h).
  std::optional<std::filesystem::path> files = {};

  bool keepsRequests = true;  // for requests(); each one for as long as the server lives

  bool tls = false;  // with a certificate made at start

  // Answers ahead of everything above; nothing leaves the request to it. Called on the connection's own
  // thread, several at the same time; may block, but not for ever. An exception becomes status 500.
  std::function<std::optional<Response>(const Request&)> handler = {};
  // Told of each request before it is answered; one call at a time, in the order of requests().
  std::function<void(const Request&)> onRequest = {};
  // Told of each request when all of its answer that will ever be sent is on its way. Several calls at the
  // same time.
  std::function<void(const Request&)> onAnswered = {};
};

// An HTTP/1.1 server on 127.0.0.1 that answers as it is told, misbehaves as it is told, and remembers what it
// was asked. A thread accepts and each connection has its own, so that a slow answer delays no other. Any
// thread may call.
class LoopbackServer {
 public:
  using Options = LoopbackServerOptions;

  // Listens when it returns. Throws std::runtime_error when the port, the directory or the certificate
  // cannot be had.
  explicit LoopbackServer(Options options = {});
  // Drops every connection, answers in the making included, and returns when no thread is left.
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  std::uint16_t port() const;
  // "http://127.0.0.1:40123" and the path, which begins with a slash or is empty.
  std::string url(std::string_view path = "") const;
  // What a client must trust to talk TLS with this server; empty without TLS. Gone with the server.
  std::filesystem::path caFile() const;

  // In the order of arrival; empty when they are not kept.
  std::vector<Request> requests() const;
  // Since the start; a connection counts when it is accepted.
  std::size_t connectionCount() const;
  // Blocks until at least so many requests have come or the deadline has passed; returns whether they have.
  bool waitForRequests(std::size_t count, std::chrono::steady_clock::time_point deadline) const;

 private:
  class State;

  std::unique_ptr<State> state_;
};

}  // namespace backend
