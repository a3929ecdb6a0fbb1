#pragma once

namespace QXPlatform {

// What a running extension may ask of the system. Main thread.
class NSExtensionContext {
 public:
  virtual ~NSExtensionContext() = default;

  // Ends the expanded notification and opens the host application.
  virtual void performNotificationDefaultAction() = 0;
};

}  // namespace QXPlatform
