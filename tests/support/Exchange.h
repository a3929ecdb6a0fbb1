#pragma once

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/network/URLSession.h"
#include "tests/support/Mailbox.h"
#include "tests/support/Test.h"

namespace support {

// What a transfer's completion was called with, to be waited for.
class Exchange {
 public:
  struct Outcome {
    std::optional<QXPlatform::Data> data = {};
    std::optional<QXPlatform::URL> file = {};
    std::string fileContent = {};  // read during the completion
    std::shared_ptr<const QXPlatform::HTTPURLResponse> response = {};
    std::optional<QXPlatform::URLError> error = {};

    int status() const { return response ? response->statusCode() : 0; }
    std::optional<QXPlatform::URLError::Code> code() const {
      return error ? std::optional(error->code) : std::nullopt;
    }
  };

  QXPlatform::URLSession::DataCompletion dataCompletion() const {
    return [outcomes = outcomes_](auto data, auto response, auto error) {
      outcomes.put({.data = std::move(data), .response = http(response), .error = std::move(error)});
    };
  }

  // `duringCompletion` is given the file's path.
  QXPlatform::URLSession::DownloadCompletion downloadCompletion(
      std::function<void(const std::filesystem::path&)> duringCompletion = [](const auto&) {}) const {
    return [outcomes = outcomes_, duringCompletion = std::move(duringCompletion)](auto file, auto response,
                                                                                  auto error) {
      Outcome outcome{.file = file, .response = http(response), .error = std::move(error)};
      if (file) {
        outcome.fileContent = contentsOf(file->filePath());
        duringCompletion(file->filePath());
      }
      outcomes.put(std::move(outcome));
    };
  }

  // The first call's; stops the process when there is none in time.
  Outcome wait() const {
    if (!outcomes_.waitFor(1)) QXPlatform::fatalError("The completion was not called.");
    return outcomes_.at(0);
  }
  std::size_t calls() const { return outcomes_.count(); }

 private:
  static std::shared_ptr<const QXPlatform::HTTPURLResponse> http(
      const std::shared_ptr<const QXPlatform::URLResponse>& response) {
    return std::dynamic_pointer_cast<const QXPlatform::HTTPURLResponse>(response);
  }

  Mailbox<Outcome> outcomes_;
};

inline QXPlatform::URLRequest requestTo(const std::string& url) {
  return QXPlatform::URLRequest(QXPlatform::URL::parse(url).value());
}

inline Exchange::Outcome load(QXPlatform::URLSession& session, QXPlatform::URLRequest request) {
  const Exchange exchange;
  session.dataTask(std::move(request), exchange.dataCompletion())->resume();
  return exchange.wait();
}

inline Exchange::Outcome load(const std::string& url) {
  QXPlatform::URLSession session({});
  return load(session, requestTo(url));
}

}  // namespace support
