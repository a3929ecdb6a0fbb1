#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "QXExtensionSDK/QXExtensionSDK.h"
#include "tests/support/Deadline.h"

namespace QXExtensionSDK {

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
class Deliveries {
 public:
  QXPlatform::ContentHandler handler() {
    return [state = state_](const std::shared_ptr<const QXPlatform::UNNotificationContent>& content) {
      const std::lock_guard lock(state->mutex);
      state->contents.push_back(content->snapshot());
      state->changed.notify_all();
    };
  }

  // Blocks until so many have come; returns whether they have.
  bool waitFor(std::size_t count) const {
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_until(lock, support::soon(),
                                      [&] { return state_->contents.size() >= count; });
  }
  std::size_t count() const {
    const std::lock_guard lock(state_->mutex);
    return state_->contents.size();
  }
  QXPlatform::NotificationProperties at(std::size_t index) const {
    const std::lock_guard lock(state_->mutex);
    return state_->contents.at(index);
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<QXPlatform::NotificationProperties> contents;
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

inline std::shared_ptr<const QXPlatform::UNNotificationRequest> makeRequest(QXPlatform::Dictionary userInfo) {
  QXPlatform::NotificationProperties properties;
  properties.title = "Title";
  properties.userInfo = std::move(userInfo);
  return std::make_shared<const QXPlatform::UNNotificationRequest>(QXPlatform::UNNotificationRequest{
      "request-1", std::make_shared<const QXPlatform::UNNotificationContent>(std::move(properties))});
}

// The rich features of a carousel whose first panel shows `imageURL`.
inline QXPlatform::Dictionary carousel(const std::string& imageURL) {
  return {{"vt", QXPlatform::Dictionary{
                     {"t", "0"},
                     {"it", std::vector<QXPlatform::Value>{QXPlatform::Dictionary{
                                {"id", "p1"}, {"md", QXPlatform::Dictionary{{"ul", imageURL}}}}}}}}};
}

}  // namespace QXExtensionSDK
