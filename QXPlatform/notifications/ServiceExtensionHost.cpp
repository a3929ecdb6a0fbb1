#include "QXPlatform/notifications/ServiceExtensionHost.h"

#include <algorithm>
#include <exception>
#include <future>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "QXPlatform/dispatch/Clock.h"
#include "QXPlatform/log/Log.h"
#include "QXPlatform/log/LogSubject.h"
#include "QXPlatform/log/StandardError.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/notifications/TimeLimits.h"

namespace QXPlatform {

namespace {

constexpr Clock::Duration kMostBeforeTheEnd = std::chrono::seconds(1);
// Beyond that many the oldest goes: its processors have long had their time.
constexpr std::size_t kMostExpiredKept = 64;

using Outcome = ServiceExtensionResult::Outcome;

}  // namespace

// One notification on its way, shared with the content handler, which may outlive it; so it must not hold the
// extension, which holds the handler. The first content that it is given is what becomes of it.
class ServiceExtensionHost::Push {
 public:
  Push(std::shared_ptr<const UNNotificationRequest> request, Completion completion)
      : request_(std::move(request)), completion_(std::move(completion)) {}

  const std::shared_ptr<const UNNotificationRequest>& request() const { return request_; }
  const LogSubject& subject() const { return subject_; }
  Clock::TimePoint begin() const { return begin_; }

  // A queue of its own: those of other notifications never wait for it.
  const DispatchQueue& queue() const { return queue_; }

  void tellExpired() {
    const std::lock_guard lock(mutex_);
    if (!accepted_) outcome_ = Outcome::expired;
  }

  // Returns whether somebody waits for the limit. It replaces the last one, which has passed. Once there is
  // content none is needed.
  bool setLimit(TimeLimits& limits, Clock::TimePoint deadline, std::function<void()> passed) {
    const std::lock_guard lock(mutex_);
    if (!accepted_) limit_ = limits.set(deadline, std::move(passed));
    return limit_.has_value();
  }
  std::optional<TimeLimits::Limit> limit() {
    const std::lock_guard lock(mutex_);
    return limit_;
  }

  // Closed before it is read: what is attached later is not kept, what was attached before is seen here.
  // Returns whether it is the first.
  bool accept(const UNNotificationContent& delivered) {
    delivered.close();
    NotificationProperties properties = delivered.snapshot();
    const std::lock_guard lock(mutex_);
    if (std::exchange(accepted_, true)) return false;
    content_ = std::move(properties);
    elapsed_ = Clock::current().now() - begin_;
    return true;
  }
  bool acceptAsItCame() {
    tellExpired();
    if (request_->content != nullptr) return accept(*request_->content);
    return accept(UNNotificationContent({}));
  }

  // Once, by whoever gave the first content.
  ServiceExtensionResult takeResult() {
    if (request_->content != nullptr) request_->content->close();
    const std::lock_guard lock(mutex_);
    return {request_->identifier, outcome_, elapsed_, std::move(content_)};
  }
  Completion takeCompletion() { return std::exchange(completion_, nullptr); }

 private:
  const std::shared_ptr<const UNNotificationRequest> request_;
  Completion completion_;
  const LogSubject subject_{request_, &request_->identifier};
  const Clock::TimePoint begin_ = Clock::current().now();
  const DispatchQueue queue_{"extension.entry", DispatchQueue::Attribute::concurrent};
  std::mutex mutex_;
  // Below, guarded by mutex_.
  Outcome outcome_ = Outcome::delivered;
  bool accepted_ = false;
  std::optional<TimeLimits::Limit> limit_;
  Clock::Duration elapsed_{};
  NotificationProperties content_;
};

ServiceExtensionHost::ServiceExtensionHost(ServiceExtensionFactory makeExtension,
                                           std::chrono::duration<double> timeLimit,
                                           std::optional<std::filesystem::path> attachments)
    : makeExtension_(std::move(makeExtension)),
      timeLimit_(timeLimit),
      attachments_(std::move(attachments)),
      timeLimits_(std::make_unique<TimeLimits>()) {}

ServiceExtensionHost::~ServiceExtensionHost() = default;

void ServiceExtensionHost::start(const std::shared_ptr<const UNNotificationRequest>& request,
                                 Completion completion) {
  const auto push = std::make_shared<Push>(request, std::move(completion));
  const ScopedLogSubject subject(push->subject());
  try {
    extend(push);
  } catch (const std::bad_alloc&) {
    writeToStandardError("out of memory: the notification is shown as it came\n");
    showAsItCame(*push);
  }
}

ServiceExtensionResult ServiceExtensionHost::run(
    const std::shared_ptr<const UNNotificationRequest>& request) {
  const auto result = std::make_shared<std::promise<ServiceExtensionResult>>();
  auto arrival = result->get_future();
  start(request, [result](ServiceExtensionResult arrived) { result->set_value(std::move(arrived)); });
  return arrival.get();
}

void ServiceExtensionHost::extend(const std::shared_ptr<Push>& push) {
  const std::shared_ptr<UNNotificationServiceExtension> extension = makeExtension_();
  const bool hasLimit = setLimits(push, extension);
  // On a thread of its own, so that a host whose hooks hang still meets its time limit.
  push->queue().async([this, push, extension] {
    extension->didReceiveNotificationRequest(push->request(), [this, push](const auto& content) {
      if (push->accept(*content)) finishSoon(push);
    });
  });
  if (hasLimit && DispatchQueue::canRun()) return;
  os_log({"ServiceExtension", "ServiceGeneral", LogType::error,
          "No thread for the extension: the notification is shown as it came"});
  showAsItCame(*push);
}

// Returns whether somebody waits for them.
bool ServiceExtensionHost::setLimits(const std::shared_ptr<Push>& push,
                                     const std::shared_ptr<UNNotificationServiceExtension>& extension) {
  const auto limit = std::chrono::duration_cast<Clock::Duration>(timeLimit_);
  const auto end = push->begin() + limit;
  return push->setLimit(*timeLimits_, end - std::min(kMostBeforeTheEnd, limit / 10), [=, this] {
    const auto isOver = [this, push] {
      try {
        // Not on a thread of the queues: hooks that hang may have taken all of them.
        std::thread([this, push] { showAsItCame(*push); }).detach();
      } catch (const std::exception&) {
        showAsItCame(*push);
      }
    };
    const ScopedLogSubject subject(push->subject());
    push->tellExpired();
    try {
      push->setLimit(*timeLimits_, end, isOver);
    } catch (const std::bad_alloc&) {
      return isOver();
    }
    try {
      tellExpired(*push, extension);
    } catch (const std::bad_alloc&) {
      writeToStandardError("out of memory: the extension is not told that its time is about to end\n");
    }
  });
}

// Not inside the extension's call, which has other things to do.
void ServiceExtensionHost::finishSoon(const std::shared_ptr<Push>& push) {
  // A handle of its own: the host may go as soon as this one has ended.
  const DispatchQueue queue = push->queue();
  try {
    queue.async([this, push] { finish(*push); });
  } catch (const std::bad_alloc&) {
    finish(*push);
  }
}

void ServiceExtensionHost::showAsItCame(Push& push) {
  if (push.acceptAsItCame()) finish(push);
}

void ServiceExtensionHost::finish(Push& push) {
  if (const auto limit = push.limit()) timeLimits_->remove(*limit);
  const auto completion = push.takeCompletion();
  ServiceExtensionResult result = push.takeResult();
  {
    const ScopedLogSubject subject(push.subject());
    keepDownloads(result.content.attachments);
  }
  completion(std::move(result));
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

void ServiceExtensionHost::tellExpired(const Push& push,
                                       const std::shared_ptr<UNNotificationServiceExtension>& extension) {
  {
    const std::lock_guard lock(mutex_);
    expired_.push_back(extension);
    if (expired_.size() > kMostExpiredKept) expired_.pop_front();
  }
  push.queue().async([extension] { extension->serviceExtensionTimeWillExpire(); });
}

Dictionary ServiceExtensionResult::toJSON() const {
  return {{"identifier", identifier},
          {"outcome", outcome == Outcome::delivered ? "delivered" : "expired"},
          {"elapsedMs", elapsed.count()},
          {"content", notificationContentToJSON(content)}};
}

}  // namespace QXPlatform
