#include "QXExtensionSDK/runtime/NotificationServiceWorker.h"

#include <atomic>
#include <new>
#include <utility>

namespace QXExtensionSDK {

namespace {

using QXPlatform::DispatchQueue;
using QXPlatform::UNMutableNotificationContent;
using QXPlatform::UNNotificationRequest;

constexpr const char* kConcurrentQueueLabel =
    "com.veltro.quorix.QXExtensionSDK.service.extension.concurrentQueue";
constexpr const char* kSerialQueueLabel = "com.veltro.quorix.QXExtensionSDK.service.extension.serialQueue";

}  // namespace

std::shared_ptr<NotificationServiceWorker> NotificationServiceWorker::make(
    std::weak_ptr<ClientCalling> clientCallingDelegate,
    std::unique_ptr<const ModuleProvider> moduleProvider) {
  auto worker = std::make_shared<NotificationServiceWorker>(Token{}, std::move(clientCallingDelegate),
                                                            std::move(moduleProvider));
  worker->adoptProcessors();
  return worker;
}

// One processor's right to complete, shared by all copies of its completion. When the last of them goes
// without a call the merge can never come, and nothing need wait for it.
class NotificationServiceWorker::Turn {
 public:
  Turn(std::weak_ptr<NotificationServiceWorker> worker, AsyncProcessing& processor)
      : worker_(std::move(worker)), processor_(processor) {}
  ~Turn() {
    if (taken_) return;
    if (const auto worker = worker_.lock()) worker->keepAlive(nullptr);
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  void complete(UserInfoChanges changes) {
    taken_ = true;
    const auto worker = worker_.lock();
    if (worker == nullptr) {
      Logger::service().error(LogCategory::serviceWorker, "self reference is nil in processDidReceive");
      return;
    }
    try {
      worker->serialQueue_.async([worker, &processor = processor_, changes = std::move(changes)]() mutable {
        worker->accept(processor, std::move(changes));
      });
    } catch (const std::bad_alloc&) {
      // Kept from the host's hook, out of which it would end the process; the time limit ends the wait.
      worker->keepAlive(nullptr);
    }
  }

 private:
  const std::weak_ptr<NotificationServiceWorker> worker_;
  AsyncProcessing& processor_;  // the worker's: good for as long as the worker can be reached
  std::atomic<bool> taken_ = false;
};

NotificationServiceWorker::NotificationServiceWorker(Token,
                                                     std::weak_ptr<ClientCalling> clientCallingDelegate,
                                                     std::unique_ptr<const ModuleProvider> moduleProvider)
    : logger_(Logger::service()),
      concurrentQueue_(kConcurrentQueueLabel, DispatchQueue::Attribute::concurrent),
      serialQueue_(kSerialQueueLabel, DispatchQueue::Attribute::serial),
      moduleProvider_(std::move(moduleProvider)),
      clientCallingDelegate_(std::move(clientCallingDelegate)) {
  Logger::setGlobalLoglevel(static_cast<std::int64_t>(clientProvideConfig().logLevel()));
}

void NotificationServiceWorker::adoptProcessors() {
  processors_ = moduleProvider_->processors();
  for (const auto& processor : processors_) {
    if (auto* executing = dynamic_cast<ServiceExtensionClientExecuting*>(processor.get())) {
      executing->setClientExecutionDelegate(weak_from_this());
    }
    if (auto* configurable = dynamic_cast<ConfigurableVtqxProcessing*>(processor.get())) {
      configurable->setConfigDelegate(weak_from_this());
    }
  }
}

void NotificationServiceWorker::workerDidReceive(const std::shared_ptr<const UNNotificationRequest>& request,
                                                 QXPlatform::ContentHandler contentHandler) {
  logger_.debug(LogCategory::serviceWorker, "workerDidReceive(_:withContentHandler:) start");
  const auto content = UNMutableNotificationContent::mutableCopy(request->content.get());
  {
    const std::lock_guard lock(deliveryMutex_);
    delivery_ = {std::move(contentHandler), content};
  }
  if (content == nullptr) {
    logger_.error(LogCategory::serviceWorker, "Mutable content is nil in processDidReceive");
    return;
  }
  keepAlive(shared_from_this());
  for (const auto& processor : processors_) start(*processor, request, content);
  dispatchGroup_.notify(serialQueue_, [weakSelf = weak_from_this()] {
    if (const auto self = weakSelf.lock()) self->mergeAndDeliver();
  });
}

void NotificationServiceWorker::start(AsyncProcessing& processor,
                                      const std::shared_ptr<const UNNotificationRequest>& request,
                                      const std::shared_ptr<UNMutableNotificationContent>& content) {
  dispatchGroup_.enter();
  concurrentQueue_.async(dispatchGroup_, [self = shared_from_this(), &processor, request, content] {
    const auto turn = std::make_shared<Turn>(self, processor);
    processor.process(request, content,
                      [turn](UserInfoChanges changes) { turn->complete(std::move(changes)); });
  });
}

void NotificationServiceWorker::accept(AsyncProcessing& processor, UserInfoChanges changes) {
  if (processor.completionCalled) {
    logger_.error(LogCategory::serviceWorker, "Multiple completion called for processor=", processor);
    return;
  }
  processor.completionCalled = true;
  if (changes) userInfoChanges_.push_back(*std::move(changes));
  dispatchGroup_.leave();
}

void NotificationServiceWorker::mergeAndDeliver() {
  keepAlive(nullptr);
  const Delivery delivery = this->delivery();
  if (delivery.contentHandler == nullptr) {
    logger_.error(LogCategory::serviceWorker, "Content handler block is nil in processDidReceive");
    return;
  }
  if (delivery.bestAttemptContent == nullptr) {
    logger_.error(LogCategory::serviceWorker, "Mutable content is nil in processDidReceive");
    return;
  }
  QXPlatform::Dictionary userInfo = delivery.bestAttemptContent->userInfo();
  for (const QXPlatform::Dictionary& changes : userInfoChanges_) userInfo = userInfo.merging(changes);
  delivery.bestAttemptContent->setUserInfo(std::move(userInfo));
  delivery.contentHandler(delivery.bestAttemptContent);
}

void NotificationServiceWorker::workerServiceExtensionTimeWillExpire() {
  logger_.debug(LogCategory::serviceWorker, "workerServiceExtensionTimeWillExpire() start");
  serialQueue_.async([self = shared_from_this()] { self->deliverOnExpiry(); });
}

void NotificationServiceWorker::deliverOnExpiry() const {
  const Delivery delivery = this->delivery();
  if (delivery.contentHandler == nullptr) {
    logger_.error(LogCategory::serviceWorker,
                  "Content handler block is nil in processServiceExtensionTimeWillExpire");
    return;
  }
  if (delivery.bestAttemptContent == nullptr) {
    logger_.error(LogCategory::serviceWorker,
                  "Mutable content is nil in processServiceExtensionTimeWillExpire");
    return;
  }
  logger_.debug(LogCategory::serviceWorker, "Service extension time expired - returning control to iOS");
  for (const auto& processor : processors_) processor->timeHasExpired();
  delivery.contentHandler(delivery.bestAttemptContent);
}

// What was kept until now is let go outside the lock, since it may be the worker's last owner.
void NotificationServiceWorker::keepAlive(std::shared_ptr<NotificationServiceWorker> self) {
  const std::lock_guard lock(deliveryMutex_);
  untilMerged_.swap(self);
}

NotificationServiceWorker::Delivery NotificationServiceWorker::delivery() const {
  const std::lock_guard lock(deliveryMutex_);
  return delivery_;
}

VTNotificationServiceConfig NotificationServiceWorker::clientProvideConfig() const {
  if (const auto delegate = clientCallingDelegate_.lock()) return delegate->callClientVtqxProvideConfig();
  logger_.error(LogCategory::serviceWorker, "Client calling delegate is nil in clientProvideConfig");
  return VTNotificationServiceConfig::defaultConfig();
}

void NotificationServiceWorker::clientDidReceive(const std::shared_ptr<const UNNotificationRequest>& request,
                                                 const std::shared_ptr<UNMutableNotificationContent>& content,
                                                 ProcessingCompletion completion) {
  if (const auto delegate = clientCallingDelegate_.lock()) {
    delegate->callClientDidReceiveRequest(request, content, completion);
  } else {
    logger_.error(LogCategory::serviceWorker, "Client calling delegate is nil in clientDidReceive");
  }
}

}  // namespace QXExtensionSDK
