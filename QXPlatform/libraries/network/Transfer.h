#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/dispatch/Clock.h"
#include "QXPlatform/libraries/network/CurlHandles.h"
#include "QXPlatform/libraries/network/InflatedBody.h"
#include "QXPlatform/libraries/network/ResponseBody.h"
#include "QXPlatform/libraries/network/TrustStore.h"
#include "QXPlatform/network/URLSession.h"

namespace QXPlatform {

// One request with its redirects, up to the final answer. Used by the transport alone, one thread at a time.
class Transfer {
 public:
  // Called once, on the thread that the answer came to, with a response or an error.
  using Completion = std::function<void(std::shared_ptr<const URLResponse>, std::optional<URLError>)>;

  // Any thread. The time limits begin with begin().
  Transfer(URLRequest request, const URLSessionConfiguration& configuration,
           std::shared_ptr<ResponseBody> body, Completion completion);
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  // Prepares the first hop; an error when it may not be made.
  std::optional<URLError> begin();
  // Of the hop; none before begin() and after complete().
  CURL* easy() const { return easy_.get(); }

  // When the transfer has to end, as things stand.
  Clock::TimePoint deadline() const;
  URLError timeOutError() const;
  // With the host's name before the cause.
  URLError error(URLError::Code code, std::string_view cause) const;

  // A hop has ended and its handle is run no more. True when another one, with a handle of its own, is
  // prepared.
  bool continueAfter(CURLcode code);

  // Calls the completion: with `error`, or with what continueAfter() has found.
  void complete(std::optional<URLError> error = std::nullopt);

 private:
  static std::size_t takeHeader(char* bytes, std::size_t size, std::size_t count, void* self);
  static std::size_t takeBody(char* bytes, std::size_t size, std::size_t count, void* self);
  static int takeProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent);
  static int takeConnection(void* self, char*, char*, int, int);

  std::optional<URLError> prepareHop();
  void configureHandle();
  void configureMethod();
  bool configureHeaders();

  void headerLine(std::string_view line);
  void bodyBytes(std::string_view bytes);
  void beginBody();
  void noteProgress() { lastProgress_ = Clock::current().now(); }

  int statusCode() const;
  // Where the answer leads; nothing for any other answer than a redirect.
  std::optional<std::string> redirectTarget() const;
  std::optional<URLError> follow(const std::string& target, int status);
  void take(const std::optional<URLError>& failed);

  URLRequest request_;
  const Clock::Duration requestTimeout_;
  const Clock::Duration resourceTimeout_;
  const TrustStore trustStore_;
  std::shared_ptr<ResponseBody> body_;  // until complete()
  Completion completion_;

  EasyHandle easy_;
  HeaderList headerList_;
  int redirects_ = 0;
  Clock::TimePoint started_;
  Clock::TimePoint lastProgress_;
  curl_off_t bytesMoved_ = 0;

  // Of the hop under way.
  std::vector<HTTPURLResponse::Header> headers_;
  std::size_t headerBytes_ = 0;
  bool headersComplete_ = false;
  bool bodyBegun_ = false;
  std::unique_ptr<InflatedBody> inflated_;  // there when the body comes compressed

  std::optional<URLError> error_;
};

}  // namespace QXPlatform
