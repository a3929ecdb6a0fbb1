#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace backend {

using Header = std::pair<std::string, std::string>;

// What a client asked for, as it was sent.
struct Request {
  std::string method;
  std::string path;  // with the query
  std::vector<Header> headers;
  std::string body;

  // The first field of that name, whatever its letter case. Lives as long as the request.
  std::optional<std::string_view> header(std::string_view name) const;
};

// Sends a body in pieces of so many bytes, with a pause before each.
struct Pacing {
  std::size_t bytes = 1;
  std::chrono::milliseconds pause{1000};
};

enum class Fault {
  none,
  neverAnswer,         // holds the connection, sends nothing
  closeWithoutAnswer,  // closes it in good order, without a byte
  resetInHeaders,      // resets it after half the header section
  resetInBody,         // resets it after half the body
  truncatedBody,       // closes it in good order after half the body
};

// What the server answers.
struct Response {
  int status = 200;
  // Content-Length and Connection are added where they are missing and belong.
  std::vector<Header> headers = {};
  std::string body = {};
  // Sent ahead of the answer, each as a header section of its own: 103, 102, ...
  std::vector<int> interimStatuses = {};
  std::chrono::milliseconds delay{0};
  // In place of Content-Length.
  bool chunked = false;
  std::optional<Pacing> pacing = {};
  Fault fault = Fault::none;

  static Response redirect(int status, std::string location);
};

}  // namespace backend
