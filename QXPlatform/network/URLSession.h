#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/network/URLRequest.h"
#include "QXPlatform/network/URLResponse.h"

namespace QXPlatform {

// Why a transfer failed. The description is fit for a log line: it names host and cause, never a header's
// value.
struct URLError {
  enum class Code {
    unsupportedURL,
    insecureConnection,  // plain http to elsewhere than loopback, and the bundle does not allow it
    cannotFindHost,
    cannotConnect,
    secureConnectionFailed,
    connectionLost,
    timedOut,
    tooManyRedirects,
    badServerResponse,
    cannotWriteFile,
    cancelled,
  };

  Code code;
  std::string message;

  const std::string& description() const { return message; }
};

struct URLSessionConfiguration {
  // No byte sent or received for that long, connecting included.
  std::chrono::duration<double> timeoutIntervalForRequest = std::chrono::seconds(60);
  // The whole transfer, redirects included.
  std::chrono::duration<double> timeoutIntervalForResource = std::chrono::hours(24 * 7);
  // The largest body, decoded, that a data task takes; one that is larger fails.
  std::size_t mostAnswerBytes = std::size_t{16} << 20;
};

// One transfer. Dropping the handle does not cancel it. Any thread may call.
class URLSessionTask {
 public:
  virtual ~URLSessionTask() = default;
  // Starts the transfer; later calls do nothing.
  virtual void resume() = 0;
  // Ends it with URLError::Code::cancelled, unless it has ended already.
  virtual void cancel() = 0;
};

// HTTP and HTTPS transfers that share connections. Making one is cheap; threads and files start with the
// first transfer. Completions are called exactly once, on the session's own serial queue, also after the
// session object is gone. Any thread may call.
//
// Up to 20 redirects are followed; to another origin, without the request's own headers. 307 and 308 keep
// method and body. 301 and 302 make a POST a GET, and so does 303 with any method: when the request has a
// body, which would be lost on the way, that redirect is not followed but is itself the answer.
class URLSession {
 public:
  // The body is present whenever there is no error, empty when the answer had none.
  using DataCompletion =
      std::function<void(std::optional<Data>, std::shared_ptr<const URLResponse>, std::optional<URLError>)>;
  // The file is a fresh one in a directory of this session's own. It is the receiver's during the call only:
  // what is not moved away by then is removed. What is moved within that directory goes with its
  // DownloadedFile, and at the latest when the process exits.
  using DownloadCompletion =
      std::function<void(std::optional<URL>, std::shared_ptr<const URLResponse>, std::optional<URLError>)>;

  explicit URLSession(URLSessionConfiguration configuration);
  ~URLSession();
  URLSession(const URLSession&) = delete;
  URLSession& operator=(const URLSession&) = delete;

  std::shared_ptr<URLSessionTask> dataTask(URLRequest request, DataCompletion completion);
  std::shared_ptr<URLSessionTask> downloadTask(URLRequest request, DownloadCompletion completion);

 private:
  class State;

  std::shared_ptr<State> state_;
};

}  // namespace QXPlatform
