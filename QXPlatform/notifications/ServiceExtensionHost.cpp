#include "QXPlatform/notifications/ServiceExtensionHost.h"

#include <algorithm>
#include <condition_variable>
#include <optional>
#include <utility>

#include "QXPlatform/dispatch/Clock.h"
#include "QXPlatform/network/URLSession.h"
#include "QXPlatform/notifications/NotificationJSON.h"

namespace QXPlatform {

namespace {

constexpr Clock::Duration kMostBeforeTheEnd = std::chrono::seconds(1);
// Beyond that many the oldest goes: its processors have long had their time.
constexpr std::size_t kMostExpiredKept = 64;

}  // namespace

// Where the first call of the content handler leaves the content. Shared with the handler, which may outlive
// the wait.
struct ServiceExtensionHost::Delivery {
  std::mutex mutex;
  std::condition_variable arrived;
  std::optional<NotificationProperties> content;  // guarded by mutex

  void accept(const UNNotificationContent& delivered) {
    NotificationProperties properties = delivered.snapshot();
    const std::lock_guard lock(mutex);
    if (content) {
      discardDownloadsNotShown(properties.attachments);
      return;
    }
    content = std::move(properties);
    arrived.notify_all();
  }

  // A thumbnail that comes after the notification has been shown is of no use to anybody. The host's own
  // files are none of our business.
  void discardDownloadsNotShown(const std::vector<UNNotificationAttachment>& attachments) const {
    for (const UNNotificationAttachment& attachment : attachments) {
      if (std::ranges::find(content->attachments, attachment) != content->attachments.end()) continue;
      URLSession::discardDownload(attachment.url());
    }
  }

  bool waitUntil(Clock::TimePoint deadline) {
    std::unique_lock lock(mutex);
    return Clock::current().waitUntil(lock, arrived, deadline, [this] { return content.has_value(); });
  }
};

ServiceExtensionHost::ServiceExtensionHost(ServiceExtensionFactory makeExtension,
                                           std::chrono::duration<double> timeLimit)
    : makeExtension_(std::move(makeExtension)),
      timeLimit_(timeLimit),
      entryQueue_("service.extension.entry", DispatchQueue::Attribute::concurrent) {}

ServiceExtensionResult ServiceExtensionHost::run(
    const std::shared_ptr<const UNNotificationRequest>& request) {
  const Clock& clock = Clock::current();
  const auto start = clock.now();
  const auto limit = std::chrono::duration_cast<Clock::Duration>(timeLimit_);
  const auto delivery = std::make_shared<Delivery>();
  const std::shared_ptr<UNNotificationServiceExtension> extension = makeExtension_();

  // On a thread of its own, so that a host whose hooks hang still meets its time limit.
  entryQueue_.async([extension, request, delivery] {
    extension->didReceiveNotificationRequest(request,
                                             [delivery](const auto& content) { delivery->accept(*content); });
  });

  auto outcome = ServiceExtensionResult::Outcome::delivered;
  if (!delivery->waitUntil(start + limit - std::min(kMostBeforeTheEnd, limit / 10))) {
    outcome = ServiceExtensionResult::Outcome::expired;
    tellExpired(extension);
    delivery->waitUntil(start + limit);
  }
  const auto elapsed = clock.now() - start;
  const std::lock_guard lock(delivery->mutex);
  if (!delivery->content && request->content != nullptr) delivery->content = request->content->snapshot();
  return {request->identifier, outcome, elapsed, delivery->content.value_or(NotificationProperties())};
}

void ServiceExtensionHost::tellExpired(const std::shared_ptr<UNNotificationServiceExtension>& extension) {
  {
    const std::lock_guard lock(mutex_);
    expired_.push_back(extension);
    if (expired_.size() > kMostExpiredKept) expired_.pop_front();
  }
  entryQueue_.async([extension] { extension->serviceExtensionTimeWillExpire(); });
}

Dictionary ServiceExtensionResult::toJSON() const {
  return {{"identifier", identifier},
          {"outcome", outcome == Outcome::delivered ? "delivered" : "expired"},
          {"elapsedMs", elapsed.count()},
          {"content", notificationContentToJSON(content)}};
}

}  // namespace QXPlatform
