#include "QXExtensionSDK/runtime/logging/Logger.h"

#include <array>
#include <utility>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXPlatform/foundation/RawValues.h"

namespace QXExtensionSDK {

std::string_view categoryString(LogCategory category) {
  using enum LogCategory;
  constexpr auto kNames =
      std::to_array<QXPlatform::RawCase<LogCategory>>({{module, "Module"},
                                                       {serviceGeneral, "ServiceGeneral"},
                                                       {serviceWorker, "ServiceWorker"},
                                                       {decompression, "Decompression"},
                                                       {deliveryReceipt, "DeliveryReceipt"},
                                                       {network, "Network"},
                                                       {carouselAttachment, "CarouselAttachment"},
                                                       {contentGeneral, "ContentGeneral"},
                                                       {ui, "UI"}});
  const std::string_view name = QXPlatform::nameIn(kNames, category);
  if (name.empty()) QXPlatform::fatalError("A log category outside 0 to 8");
  return name;
}

std::atomic<std::int64_t> Logger::globalLoglevel_{static_cast<std::int64_t>(LogLevel::error)};

Logger::Logger(LogSubSystem subSystem, std::unique_ptr<const LogPrinter> logPrinter)
    : subSystem_(subSystem), logPrinter_(std::move(logPrinter)) {}

const Logger& Logger::service() {
  static const QXPlatform::NeverDestroyed<Logger> logger(LogSubSystem::serviceExtension,
                                                         std::make_unique<OSLogPrinter>());
  return *logger;
}

const Logger& Logger::content() {
  static const QXPlatform::NeverDestroyed<Logger> logger(LogSubSystem::contentExtnsion,
                                                         std::make_unique<OSLogPrinter>());
  return *logger;
}

void Logger::print(QXPlatform::LogType type, LogCategory category, std::string_view message) const {
  logPrinter_->print(message, type, QXPlatform::rawValue(subSystem_), categoryString(category));
}

}  // namespace QXExtensionSDK
