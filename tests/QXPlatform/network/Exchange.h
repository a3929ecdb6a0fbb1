#pragma once

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/network/URLSession.h"
#include "tests/support/Deadline.h"

namespace QXPlatform {

// What a completion was called with, to be waited for.
class Exchange {
 public:
  struct Outcome {
    std::optional<Data> data = {};
    std::optional<URL> file = {};
    std::string fileContent = {};  // read during the completion
    std::shared_ptr<const HTTPURLResponse> response = {};
    std::optional<URLError> error = {};

    int status() const { return response ? response->statusCode() : 0; }
    std::optional<URLError::Code> code() const { return error ? std::optional(error->code) : std::nullopt; }
  };

  URLSession::DataCompletion dataCompletion() {
    return [state = state_](auto data, auto response, auto error) {
      state->set({.data = std::move(data), .response = http(response), .error = std::move(error)});
    };
  }

  // `duringCompletion` is given the file's path.
  URLSession::DownloadCompletion downloadCompletion(
      std::function<void(const std::filesystem::path&)> duringCompletion = [](const auto&) {}) {
    return [state = state_, duringCompletion = std::move(duringCompletion)](auto file, auto response,
                                                                            auto error) {
      Outcome outcome{.file = file, .response = http(response), .error = std::move(error)};
      if (file) {
        std::ifstream stream(file->filePath(), std::ios::binary);
        outcome.fileContent.assign(std::istreambuf_iterator<char>(stream), {});
        duringCompletion(file->filePath());
      }
      state->set(std::move(outcome));
    };
  }

  // The first call's; stops the process when there is none in time.
  Outcome wait() const {
    std::unique_lock lock(state_->mutex);
    if (!state_->changed.wait_for(lock, support::kPatience, [this] { return state_->calls > 0; })) {
      fatalError("The completion was not called.");
    }
    return state_->outcome;
  }

  int calls() const {
    const std::lock_guard lock(state_->mutex);
    return state_->calls;
  }

 private:
  struct State {
    void set(Outcome received) {
      const std::lock_guard lock(mutex);
      if (calls++ == 0) outcome = std::move(received);
      changed.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    int calls = 0;
    Outcome outcome;
  };

  static std::shared_ptr<const HTTPURLResponse> http(const std::shared_ptr<const URLResponse>& response) {
    return std::dynamic_pointer_cast<const HTTPURLResponse>(response);
  }

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

inline URLRequest requestTo(const std::string& url) {
  return URLRequest(URL::parse(url).value());
}

inline Exchange::Outcome load(URLSession& session, URLRequest request) {
  Exchange exchange;
  session.dataTask(std::move(request), exchange.dataCompletion())->resume();
  return exchange.wait();
}

inline Exchange::Outcome load(const std::string& url) {
  URLSession session({});
  return load(session, requestTo(url));
}

}  // namespace QXPlatform
