#include "tools/qx/ExtensionRun.h"

#include <utility>

#include "QXPlatform/log/StandardError.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

}  // namespace

ExtensionRun::ExtensionRun(QXAgent::ProgramStart start) : start_(std::move(start)) {}

std::optional<Error> ExtensionRun::start() {
  const auto client = running();
  return client ? std::nullopt : std::optional(client.error());
}

Result<Dictionary> ExtensionRun::ask(const Dictionary& request, std::chrono::duration<double> limit) {
  const auto client = running();
  if (!client) return client.error();
  return (*client)->ask(request, limit);
}

Result<std::shared_ptr<ExtensionClient>> ExtensionRun::running() {
  const std::lock_guard lock(mutex_);
  if (client_ != nullptr && client_->hasEnded()) client_.reset();
  if (client_ == nullptr) {
    auto started = ExtensionClient::start(start_);
    if (!started) return started.error();
    client_ = std::shared_ptr<ExtensionClient>((*std::move(started)).release(),
                                               [this](ExtensionClient* dead) { bury(dead); });
  }
  return client_;
}

// By the last one that waits for its answers.
void ExtensionRun::bury(ExtensionClient* client) const {
  const std::unique_ptr<ExtensionClient> owner(client);
  const auto problem = client->finish();
  if (isOver_) return;
  const std::string reason = problem ? problem->message : "the extension has ended";
  QXPlatform::writeToStandardError("qx push: " + reason + "; the next push starts it again\n");
}

std::optional<Error> ExtensionRun::finish() {
  const std::lock_guard lock(mutex_);
  isOver_ = true;
  return client_ == nullptr ? std::nullopt : client_->finish();
}

}  // namespace qx
