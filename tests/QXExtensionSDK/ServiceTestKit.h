#pragma once

#include "QXExtensionSDK/QXExtensionSDK.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Mailbox.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {

using support::makeRequest;

// A service extension whose hooks are what the test says.
class TestService : public VTQXNotificationService {
 public:
  using Hook = std::function<void(const std::shared_ptr<QXPlatform::UNMutableNotificationContent>&,
                                  ClientContentHandler)>;

  explicit TestService(VTNotificationServiceConfig config = {LogLevel::debug, true}, Hook hook = {})
      : config_(config), hook_(std::move(hook)) {}

  VTNotificationServiceConfig vtqxProvideConfig() override { return config_; }
  void vtqxDidReceiveRequest(const std::shared_ptr<const QXPlatform::UNNotificationRequest>& request,
                             const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
                             ClientContentHandler contentHandler) override {
    if (hook_) return hook_(content, std::move(contentHandler));
    VTQXNotificationService::vtqxDidReceiveRequest(request, content, std::move(contentHandler));
  }

 private:
  const VTNotificationServiceConfig config_;
  const Hook hook_;
};

// Collects what a content handler is called with.
class Deliveries : public support::Mailbox<QXPlatform::NotificationProperties> {
 public:
  QXPlatform::ContentHandler handler() const {
    return [box = *this](const auto& content) { box.put(content->snapshot()); };
  }
};

}  // namespace QXExtensionSDK
