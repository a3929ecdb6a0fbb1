// A host's content extension: the framework draws the carousel.

#include <QXExtensionSDK/QXExtensionSDKContent.h>

namespace {

class NotificationViewController final : public QXExtensionSDK::VTQXNotificationViewController {
 public:
  // Errors to the log.
  std::optional<QXExtensionSDK::VTQXContentExtensionConfig> vtqxProvideConfig() override {
    constexpr double kTimeoutIntervalForRequest = 15;
    return QXExtensionSDK::VTQXContentExtensionConfig(QXExtensionSDK::LogLevel::error,
                                                      kTimeoutIntervalForRequest);
  }
};

}  // namespace

int main(int argc, char** argv) {
  return QXPlatform::contentExtensionMain<NotificationViewController>(argc, argv);
}
