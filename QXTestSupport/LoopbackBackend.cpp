#include "QXTestSupport/LoopbackBackend.h"

#include <mutex>

#include "QXTestSupport/Patience.h"
#include "tools/backend/LoopbackServer.h"

namespace QXTestSupport {

class LoopbackBackend::State {
 public:
  void answer(int status, std::string body) {
    const std::lock_guard lock(mutex_);
    response_ = {
        .status = status, .headers = {{"Content-Type", "application/json"}}, .body = std::move(body)};
  }
  const backend::LoopbackServer& server() const { return server_; }

 private:
  std::optional<backend::Response> respond(const backend::Request& request) const {
    if (request.path.starts_with("/files/")) return std::nullopt;
    const std::lock_guard lock(mutex_);
    return response_;
  }

  mutable std::mutex mutex_;
  backend::Response response_{.headers = {{"Content-Type", "application/json"}}, .body = "{}"};
  // Last, so that it ends first.
  backend::LoopbackServer server_{
      {.handler = [this](const backend::Request& request) { return respond(request); }}};
};

LoopbackBackend::LoopbackBackend() : state_(std::make_unique<State>()) {}

LoopbackBackend::~LoopbackBackend() = default;

std::string LoopbackBackend::url(std::string_view path) const {
  return state_->server().url(path);
}

void LoopbackBackend::answer(int status, std::string body) {
  state_->answer(status, std::move(body));
}

std::vector<LoopbackBackend::Request> LoopbackBackend::requests() const {
  std::vector<Request> requests;
  for (backend::Request& request : state_->server().requests()) {
    requests.push_back({std::move(request.method), std::move(request.path), std::move(request.headers),
                        std::move(request.body)});
  }
  return requests;
}

bool LoopbackBackend::waitForRequests(std::size_t count) const {
  return state_->server().waitForRequests(count, soon());
}

}  // namespace QXTestSupport
