#include "QXExtensionSDK/runtime/NotificationServiceWorker.h"

#include <string>
#include <utility>

#include "QXExtensionSDK/decoration/DefaultModuleProvider.h"

namespace QXExtensionSDK {

namespace {

using platform::DispatchQueue;
using platform::UNMutableNotificationContent;
using platform::UNNotificationRequest;

const std::string& concurrentQueueLabel() {
  static const std::string& label =
      *new std::string("com.veltro.quorix.QXExtensionSDK.service.extension.concurrentQueue");
  return label;
}

const std::string& serialQueueLabel() {
  static const std::string& label =
      *new std::string("com.veltro.quorix.QXExtensionSDK.service.extension.serialQueue");
  return label;
}

}  // namespace

std::shared_ptr<NotificationServiceWorker> NotificationServiceWorker::make(
    std::weak_ptr<ClientCalling> clientCallingDelegate) {
  return make(std::move(clientCallingDelegate), std::make_unique<const DefaultModuleProvider>());
}

std::shared_ptr<NotificationServiceWorker> NotificationServiceWorker::make(
    std::weak_ptr<ClientCalling> clientCallingDelegate,
    std::unique_ptr<const ModuleProvider> moduleProvider) {
  auto worker = std::make_shared<NotificationServiceWorker>(Token{}, std::move(clientCallingDelegate),
                                                            std::move(moduleProvider));
  worker->adoptProcessors();
  return worker;
}

NotificationServiceWorker::NotificationServiceWorker(Token,
                                                     std::weak_ptr<ClientCalling> clientCallingDelegate,
                                                     std::unique_ptr<const ModuleProvider> moduleProvider)
    : logger_(Logger::service()),
      concurrentQueue_(concurrentQueueLabel(), DispatchQueue::Attribute::concurrent),
      serialQueue_(serialQueueLabel(), DispatchQueue::Attribute::serial),
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
                                                 platform::ContentHandler contentHandler) {
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
  for (const auto& processor : processors_) start(*processor, request, content);
  dispatchGroup_.notify(serialQueue_, [self = shared_from_this()] { self->mergeAndDeliver(); });
}

void NotificationServiceWorker::start(AsyncProcessing& processor,
                                      const std::shared_ptr<const UNNotificationRequest>& request,
                                      const std::shared_ptr<UNMutableNotificationContent>& content) {
  dispatchGroup_.enter();
  concurrentQueue_.async(dispatchGroup_, [self = shared_from_this(), &processor, request, content] {
    processor.process(request, content, self->makeCompletion(processor));
  });
}

ProcessingCompletion NotificationServiceWorker::makeCompletion(AsyncProcessing& processor) {
  // The worker owns the processor, so the reference is good for as long as the worker can be reached.
  return [weakSelf = weak_from_this(), &processor](UserInfoChanges changes) {
    const auto self = weakSelf.lock();
    if (self == nullptr) {
      Logger::service().error(LogCategory::serviceWorker, "self reference is nil in processDidReceive");
      return;
    }
    self->serialQueue_.async([self, &processor, changes = std::move(changes)]() mutable {
      self->accept(processor, std::move(changes));
    });
  };
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

void NotificationServiceWorker::mergeAndDeliver() const {
  const Delivery delivery = this->delivery();
  if (delivery.contentHandler == nullptr) {
    logger_.error(LogCategory::serviceWorker, "Content handler block is nil in processDidReceive");
    return;
  }
  platform::Dictionary userInfo = delivery.bestAttemptContent->userInfo();
  for (const platform::Dictionary& changes : userInfoChanges_) userInfo = userInfo.merging(changes);
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
  delivery.contentHandler(delivery.bestAttemptContent);
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
