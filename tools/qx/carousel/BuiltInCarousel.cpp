#include "tools/qx/carousel/BuiltInCarousel.h"

#include <QApplication>
#include <utility>

namespace qx {

namespace {

class SimulatedContentExtension final : public QXExtensionSDK::VTQXNotificationViewController {
 public:
  explicit SimulatedContentExtension(QXExtensionSDK::LogLevel logLevel) : logLevel_(logLevel) {}

  std::optional<QXExtensionSDK::VTContentExtensionConfig> vtqxProvideConfig() override {
    constexpr double kTimeout = 15;
    return QXExtensionSDK::VTContentExtensionConfig(logLevel_, kTimeout);
  }

 private:
  const QXExtensionSDK::LogLevel logLevel_;
};

}  // namespace

BuiltInCarousel::BuiltInCarousel(QXExtensionSDK::LogLevel logLevel, int width, StepHandler stepTaken)
    : host_(std::make_shared<SimulatedContentExtension>(logLevel), width),
      driver_(host_, std::move(stepTaken)) {}

QXPlatform::Result<QXPlatform::Dictionary> BuiltInCarousel::play(const QXPlatform::Dictionary& command) {
  return driver_.carryOut(command);
}

void BuiltInCarousel::runWindow() {
  QApplication::exec();
}

}  // namespace qx
