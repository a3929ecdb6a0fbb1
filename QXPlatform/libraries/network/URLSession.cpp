#include "QXPlatform/network/URLSession.h"

#include <mutex>
#include <new>
#include <utility>

#include "QXPlatform/dispatch/Activity.h"
#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/libraries/network/DataBody.h"
#include "QXPlatform/libraries/network/FileBody.h"
#include "QXPlatform/libraries/network/Transport.h"
#include "QXPlatform/log/LogSubject.h"

namespace QXPlatform {

class URLSession::State {
 public:
  explicit State(URLSessionConfiguration given) : configuration(given) {}

  const URLSessionConfiguration configuration;
  const DispatchQueue queue{"URLSession", DispatchQueue::Attribute::serial};
  const std::shared_ptr<SessionDirectory> directory = std::make_shared<SessionDirectory>();
};

namespace {

using Response = std::shared_ptr<const URLResponse>;
using Failure = std::optional<URLError>;

// Holds all that its transfer needs, so that the session and the handle may go.
class Task final : public URLSessionTask, public std::enable_shared_from_this<Task> {
 public:
  // Called once, on the session's queue.
  using Deliver = std::function<void(Response, Failure)>;

  Task(const URLSessionConfiguration& configuration, DispatchQueue queue, URLRequest request,
       std::shared_ptr<ResponseBody> body, Deliver deliver)
      : configuration_(configuration),
        queue_(std::move(queue)),
        request_(std::move(request)),
        body_(std::move(body)),
        deliver_(std::move(deliver)) {}

  void resume() override {
    if (begin()) return;
    transferEnded(nullptr,
                  URLError{URLError::Code::cannotConnect, "the system has no memory for the network"});
  }

  void cancel() override {
    {
      const std::lock_guard lock(mutex_);
      if (stage_ == Stage::running) Transport::shared().cancel(transfer_);
      if (stage_ != Stage::suspended) return;
      stage_ = Stage::ended;
    }
    deliver(nullptr, URLError{URLError::Code::cancelled, request_.url.host() + ": cancelled"});
  }

 private:
  enum class Stage { suspended, running, ended };

  // False when there is no network to run it.
  bool begin() {
    const std::lock_guard lock(mutex_);
    if (stage_ != Stage::suspended) return true;
    stage_ = Stage::running;
    activity_.emplace();
    transfer_ = std::make_shared<Transfer>(std::move(request_), configuration_, body_,
                                           [self = shared_from_this()](Response response, Failure error) {
                                             self->transferEnded(std::move(response), std::move(error));
                                           });
    try {
      return Transport::shared().start(transfer_);
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  void transferEnded(Response response, Failure error) {
    std::shared_ptr<Transfer> released;
    {
      const std::lock_guard lock(mutex_);
      stage_ = Stage::ended;
      released.swap(transfer_);
    }
    deliver(std::move(response), std::move(error));
    activity_.reset();
  }

  void deliver(Response response, Failure error) {
    body_.reset();
    const ScopedLogSubject subject(subject_);
    queue_.async([call = std::exchange(deliver_, nullptr), response = std::move(response),
                  error = std::move(error)]() mutable { call(std::move(response), std::move(error)); });
  }

  const URLSessionConfiguration configuration_;
  const DispatchQueue queue_;
  URLRequest request_;
  std::shared_ptr<ResponseBody> body_;
  Deliver deliver_;
  const LogSubject subject_ = currentLogSubject();
  std::optional<Activity> activity_;  // there while running

  std::mutex mutex_;
  Stage stage_ = Stage::suspended;      // guarded by mutex_
  std::shared_ptr<Transfer> transfer_;  // guarded by mutex_; there while running
};

}  // namespace

URLSession::URLSession(URLSessionConfiguration configuration)
    : state_(std::make_shared<State>(configuration)) {}
URLSession::~URLSession() = default;

std::shared_ptr<URLSessionTask> URLSession::dataTask(URLRequest request, DataCompletion completion) {
  auto body = std::make_shared<DataBody>(state_->configuration.mostAnswerBytes);
  auto deliver = [body, completion = std::move(completion)](Response response, Failure error) {
    if (error) {
      completion(std::nullopt, nullptr, std::move(error));
    } else {
      completion(body->take(), std::move(response), std::nullopt);
    }
  };
  return std::make_shared<Task>(state_->configuration, state_->queue, std::move(request), std::move(body),
                                std::move(deliver));
}

std::shared_ptr<URLSessionTask> URLSession::downloadTask(URLRequest request, DownloadCompletion completion) {
  auto body = std::make_shared<FileBody>(state_->directory);
  auto deliver = [body, completion = std::move(completion)](Response response, Failure error) {
    if (error) {
      completion(std::nullopt, nullptr, std::move(error));
    } else {
      completion(body->url(), std::move(response), std::nullopt);
    }
    body->discard();
  };
  return std::make_shared<Task>(state_->configuration, state_->queue, std::move(request), std::move(body),
                                std::move(deliver));
}

}  // namespace QXPlatform
