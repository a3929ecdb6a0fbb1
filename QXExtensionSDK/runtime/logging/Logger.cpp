#include "QXExtensionSDK/runtime/logging/Logger.h"

#include <array>
#include <cstddef>
#include <utility>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXExtensionSDK {

std::string_view categoryString(LogCategory category) {
  static constexpr std::array<std::string_view, 9> kNames{"Module",
                                                          "ServiceGeneral",
                                                          "ServiceWorker",
                                                          "Decompression",
                                                          "DeliveryReceipt",
                                                          "Network",
                                                          "CarouselAttachment",
                                                          "ContentGeneral",
                                                          "UI"};
  const auto index = static_cast<std::size_t>(category);
  if (index >= kNames.size()) QXPlatform::fatalError("A log category outside 0 to 8");
  return kNames.at(index);
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
  logPrinter_->print(message, type, rawValue(subSystem_), categoryString(category));
}

}  // namespace QXExtensionSDK
