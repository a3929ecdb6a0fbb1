#include "QXTestSupport/ExtensionHost.h"

#include <stdexcept>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/notifications/ServiceExtensionHost.h"

namespace QXTestSupport {
namespace {

std::shared_ptr<const QXPlatform::UNNotificationRequest> requestOf(std::string_view json) {
  const auto push = QXPlatform::parseJSON(json);
  if (!push) throw std::invalid_argument("The push is no JSON: " + push.error().description());
  auto request = QXPlatform::notificationRequestFromJSON(*push);
  if (!request) throw std::invalid_argument("The push is none: " + request.error().description());
  return *request;
}

}  // namespace

class ExtensionHost::State {
 public:
  State(QXPlatform::ServiceExtensionFactory makeExtension, std::chrono::seconds timeLimit)
      : host_(std::move(makeExtension), timeLimit) {}

  ShownNotification run(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request) {
    QXPlatform::ServiceExtensionResult result = host_.run(request);
    return {std::move(result.identifier),
            result.outcome == QXPlatform::ServiceExtensionResult::Outcome::expired,
            std::move(result.content)};
  }

 private:
  QXPlatform::ServiceExtensionHost host_;
};

ExtensionHost::ExtensionHost(QXPlatform::ServiceExtensionFactory makeExtension,
                             std::chrono::seconds timeLimit)
    : state_(std::make_unique<State>(std::move(makeExtension), timeLimit)) {}

ExtensionHost::~ExtensionHost() = default;
ExtensionHost::ExtensionHost(ExtensionHost&&) noexcept = default;

ShownNotification ExtensionHost::push(std::string_view json) {
  return state_->run(requestOf(json));
}

std::future<ShownNotification> ExtensionHost::startPush(std::string_view json) {
  return std::async(std::launch::async,
                    [state = state_.get(), request = requestOf(json)] { return state->run(request); });
}

}  // namespace QXTestSupport
