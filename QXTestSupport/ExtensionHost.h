#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/ServiceExtensionMain.h"
#include "QXPlatform/notifications/UNNotificationContent.h"

namespace QXTestSupport {

// What became of a push: what the system would have shown, and whether the time limit had to end the wait.
struct ShownNotification {
  std::string identifier;
  bool expired = false;
  QXPlatform::NotificationProperties content;
};

// Plays the system: hands pushes to a service extension in the test's own process, each to an object of its
// own, with the system's time limit. Any thread.
//
//   QXTestSupport::ExtensionHost host = QXTestSupport::ExtensionHost::of<NotificationService>();
//   EXPECT_EQ(host.push(R"({"aps": {"alert": {"title": "Hello"}}})").content.title, "Hello");
class ExtensionHost {
 public:
  explicit ExtensionHost(QXPlatform::ServiceExtensionFactory makeExtension,
                         std::chrono::seconds timeLimit = std::chrono::seconds(30));
  ~ExtensionHost();
  ExtensionHost(ExtensionHost&&) noexcept;
  ExtensionHost& operator=(ExtensionHost&&) = delete;

  template <typename Extension>
  static ExtensionHost of() {
    return ExtensionHost([] { return std::make_shared<Extension>(); });
  }

  // Blocks until the extension hands its content over or its time is up. `json` is a push as it travels, or a
  // request as `qx push` takes it. Throws std::invalid_argument when it is neither.
  ShownNotification push(std::string_view json);
  // The same beside the test, which moves a ManualClock meanwhile. This object has to outlive the future's
  // result.
  std::future<ShownNotification> startPush(std::string_view json);

 private:
  class State;

  std::unique_ptr<State> state_;
};

}  // namespace QXTestSupport
