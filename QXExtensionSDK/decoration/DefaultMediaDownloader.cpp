#include "QXExtensionSDK/decoration/DefaultMediaDownloader.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/Result.h"

namespace QXExtensionSDK {

namespace {

using QXPlatform::Error;
using QXPlatform::Result;
using QXPlatform::URL;

constexpr auto kTimeout = std::chrono::seconds(15);

// Only HTTP has a status, and only http and https are loaded.
std::int64_t statusOf(const QXPlatform::URLResponse* response) {
  const auto* http = dynamic_cast<const QXPlatform::HTTPURLResponse*>(response);
  return http == nullptr ? 0 : http->statusCode();
}

// A name from outside may be anything; only one that stays in the directory will do.
bool isPlainFileName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
         name.find('\0') == std::string::npos;
}

Result<URL> moveBeside(const URL& temporary, const URL& remote) {
  const std::string name = remote.lastPathComponent();
  if (!isPlainFileName(name)) return Error{"the remote name is no file name"};
  const std::filesystem::path source = temporary.filePath();
  const std::filesystem::path destination = source.parent_path() / name;
  std::error_code error;
  std::filesystem::remove(destination, error);
  if (!error) std::filesystem::rename(source, destination, error);
  if (error) return Error{error.message()};
  return URL::file(destination.native());
}

std::optional<URL> takeFile(const URL& remote, const std::optional<URL>& temporary,
                            const QXPlatform::URLResponse* response,
                            const std::optional<QXPlatform::URLError>& error, ThumbnailReport& report) {
  const Logger& logger = Logger::service();
  if (error) {
    logger.debug(LogCategory::carouselAttachment, "Attachment media download error: ", *error);
    report.notAttached(*error);
    return std::nullopt;
  }
  const std::int64_t status = statusOf(response);
  if (!temporary || status < 200 || status > 299) {
    report.notAttached("the server answered with status ", status);
    return std::nullopt;
  }
  auto moved = moveBeside(*temporary, remote);
  if (!moved) {
    logger.debug(LogCategory::carouselAttachment, "Attachment media remove/move error: ", moved.error());
    report.notAttached(moved.error());
    return std::nullopt;
  }
  return *std::move(moved);
}

}  // namespace

DefaultMediaDownloader::DefaultMediaDownloader(std::shared_ptr<ThumbnailReport> report)
    : session_({.timeoutIntervalForRequest = kTimeout, .timeoutIntervalForResource = kTimeout}),
      report_(std::move(report)) {}

void DefaultMediaDownloader::download(const URL& remote, Completion completion) {
  const auto task = session_.downloadTask(
      QXPlatform::URLRequest(remote),
      [remote, report = report_, completion = std::move(completion)](
          const std::optional<URL>& temporary, const std::shared_ptr<const QXPlatform::URLResponse>& response,
          const std::optional<QXPlatform::URLError>& error) {
        completion(takeFile(remote, temporary, response.get(), error, *report));
      });
  task->resume();
}

}  // namespace QXExtensionSDK
