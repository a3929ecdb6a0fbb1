#include "QXPlatform/notifications/ServiceExtensionHost.h"

#include <algorithm>
#include <condition_variable>
#include <new>
#include <optional>
#include <utility>

#include "QXPlatform/dispatch/Clock.h"
#include "QXPlatform/log/Log.h"
#include "QXPlatform/log/LogSubject.h"
#include "QXPlatform/log/StandardError.h"
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

  // Closed before it is read: what is attached later is not kept, what was attached before is seen here.
  void accept(const UNNotificationContent& delivered) {
    delivered.close();
    NotificationProperties properties = delivered.snapshot();
    const std::lock_guard lock(mutex);
    if (content) return;
    content = std::move(properties);
    arrived.notify_all();
  }

  bool waitUntil(Clock::TimePoint deadline) {
    std::unique_lock lock(mutex);
    return Clock::current().waitUntil(lock, arrived, deadline, [this] { return content.has_value(); });
  }

  // What there is, which is from now on all that counts, or else the notification as it came.
  NotificationProperties shown(const UNNotificationContent* original) {
    if (original != nullptr) original->close();
    const std::lock_guard lock(mutex);
    if (!content) content = original != nullptr ? original->snapshot() : NotificationProperties();
    return *content;
  }
};

ServiceExtensionHost::ServiceExtensionHost(ServiceExtensionFactory makeExtension,
                                           std::chrono::duration<double> timeLimit,
                                           std::optional<std::filesystem::path> attachments)
    : makeExtension_(std::move(makeExtension)),
      timeLimit_(timeLimit),
      attachments_(std::move(attachments)),
      entryQueue_("service.extension.entry", DispatchQueue::Attribute::concurrent) {}

ServiceExtensionResult ServiceExtensionHost::run(
    const std::shared_ptr<const UNNotificationRequest>& request) {
  const auto start = Clock::current().now();
  try {
    return extend(request);
  } catch (const std::bad_alloc&) {
    writeToStandardError("out of memory: the notification is shown as it came\n");
    return {request->identifier, ServiceExtensionResult::Outcome::expired, Clock::current().now() - start,
            request->content != nullptr ? request->content->snapshot() : NotificationProperties()};
  }
}

ServiceExtensionResult ServiceExtensionHost::extend(
    const std::shared_ptr<const UNNotificationRequest>& request) {
  const ScopedLogSubject subject(std::make_shared<const std::string>(request->identifier));
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
  if (!DispatchQueue::canRun()) {
    os_log({"ServiceExtension", "ServiceGeneral", LogType::error,
            "No thread for the extension: the notification is shown as it came"});
    outcome = ServiceExtensionResult::Outcome::expired;
  } else if (!delivery->waitUntil(start + limit - std::min(kMostBeforeTheEnd, limit / 10))) {
    outcome = ServiceExtensionResult::Outcome::expired;
    tellExpired(extension);
    delivery->waitUntil(start + limit);
  }
  const auto elapsed = clock.now() - start;
  NotificationProperties shown = delivery->shown(request->content.get());
  keepDownloads(shown.attachments);
  return {request->identifier, outcome, elapsed, std::move(shown)};
}

// What cannot be kept is not shown.
void ServiceExtensionHost::keepDownloads(std::vector<UNNotificationAttachment>& attachments) {
  std::vector<UNNotificationAttachment> kept;
  for (UNNotificationAttachment& attachment : attachments) {
    if (!attachment.isDownload()) {
      kept.push_back(std::move(attachment));
    } else if (auto moved = attachment.movedTo(attachments_)) {
      kept.push_back(*std::move(moved));
    } else {
      os_log({"ServiceExtension", "ServiceGeneral", LogType::error,
              "Attachment not kept: " + moved.error().message});
    }
  }
  attachments = std::move(kept);
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
