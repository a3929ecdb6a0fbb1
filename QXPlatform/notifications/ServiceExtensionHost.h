#pragma once

#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/AttachmentStore.h"
#include "QXPlatform/notifications/ServiceExtensionMain.h"
#include "QXPlatform/notifications/UNNotificationServiceExtension.h"

namespace QXPlatform {

class TimeLimits;

// What became of one notification: the content when the handler was first called.
struct ServiceExtensionResult {
  enum class Outcome { delivered, expired };

  std::string identifier;
  Outcome outcome;
  std::chrono::duration<double, std::milli> elapsed;
  NotificationProperties content;

  // {"identifier", "outcome", "elapsedMs", "content"}
  Dictionary toJSON() const;
};

// The operating system's side of a service extension: makes an object for each notification, calls its
// entries and takes the content. Several notifications may be handled at once.
class ServiceExtensionHost {
 public:
  using Completion = std::function<void(ServiceExtensionResult)>;

  static constexpr std::chrono::duration<double> kLongestTimeLimit = std::chrono::hours(24);

  // Downloads that notifications show move into `attachments`, as AttachmentStore has it.
  // REQUIRES: 0 < timeLimit <= kLongestTimeLimit
  ServiceExtensionHost(ServiceExtensionFactory makeExtension, std::chrono::duration<double> timeLimit,
                       std::optional<std::filesystem::path> attachments = std::nullopt);
  // REQUIRES: every notification has ended.
  ~ServiceExtensionHost();
  ServiceExtensionHost(const ServiceExtensionHost&) = delete;
  ServiceExtensionHost& operator=(const ServiceExtensionHost&) = delete;

  // Returns when the extension has been called; the completion is called once, on any thread, when the
  // content handler first is, at most as late as the time limit. When that is about to end, by a second or
  // the tenth of a short one, the extension is told; when it has handed nothing over at its end either, the
  // notification is shown as it came. Files that are downloaded for the notification and not shown with it
  // are removed, however late they come.
  void start(const std::shared_ptr<const UNNotificationRequest>& request, Completion completion);
  // The same, and waits for it.
  ServiceExtensionResult run(const std::shared_ptr<const UNNotificationRequest>& request);

 private:
  class Push;

  void extend(const std::shared_ptr<Push>& push);
  bool setLimits(const std::shared_ptr<Push>& push,
                 const std::shared_ptr<UNNotificationServiceExtension>& extension);
  void finishSoon(const std::shared_ptr<Push>& push);
  void finish(Push& push);
  void showAsItCame(Push& push);
  void keepDownloads(std::vector<UNNotificationAttachment>& attachments);
  void tellExpired(const Push& push, const std::shared_ptr<UNNotificationServiceExtension>& extension);

  const ServiceExtensionFactory makeExtension_;
  const std::chrono::duration<double> timeLimit_;
  AttachmentStore attachments_;
  std::mutex mutex_;
  // Extensions whose processors may still be at work. Guarded by mutex_.
  std::deque<std::shared_ptr<UNNotificationServiceExtension>> expired_;
  const std::unique_ptr<TimeLimits> timeLimits_;
};

}  // namespace QXPlatform
