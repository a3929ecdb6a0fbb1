#pragma once

#include <atomic>
#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "QXExtensionSDK/runtime/logging/LogCategory.h"
#include "QXExtensionSDK/runtime/logging/LogLevel.h"
#include "QXExtensionSDK/runtime/logging/LogPrinter.h"
#include "QXExtensionSDK/runtime/logging/LogSubSystem.h"

namespace QXExtensionSDK {

// What a message is made of: text, an integer, or anything with a `description()` of its own or beside its
// type. Not a text, or another owner of memory, that is made for the call: it would be made for filtered-out
// messages as well.
template <typename Piece>
concept LogPiece = std::is_lvalue_reference_v<Piece> || std::is_trivially_destructible_v<Piece>;

// Writes messages of one extension to the log. Immutable; any thread.
//
// A message is handed over in pieces and joined only when the level lets it through, so a filtered-out call
// costs one comparison:
//
//   logger.error(LogCategory::network, "ServiceManager NetworkExecutor error ", error);
class Logger {
 public:
  Logger(LogSubSystem subSystem, std::unique_ptr<const LogPrinter> logPrinter);

  // The shared loggers of the two extensions; they live as long as the process.
  static const Logger& service();
  static const Logger& content();

  LogSubSystem subSystem() const { return subSystem_; }
  // The category of code that both extensions run and that has none of its own.
  LogCategory generalCategory() const {
    return subSystem_ == LogSubSystem::serviceExtension ? LogCategory::serviceGeneral
                                                        : LogCategory::contentGeneral;
  }

  // The process-wide level as a LogLevel raw value: error until a configuration sets it. Read afresh for
  // every message; plain words, no lock.
  static std::int64_t globalLoglevel() { return globalLoglevel_.load(std::memory_order_relaxed); }
  static void setGlobalLoglevel(std::int64_t level) {
    // Written when it changes alone: all threads read it all the time.
    if (globalLoglevel() != level) globalLoglevel_.store(level, std::memory_order_relaxed);
  }

  template <LogPiece... Pieces>
  void debug(LogCategory category, Pieces&&... pieces) const {
    if (globalLoglevel() < 1) [[unlikely]]
      write(QXPlatform::LogType::debug, category, pieces...);
  }
  template <LogPiece... Pieces>
  void warn(LogCategory category, Pieces&&... pieces) const {
    if (globalLoglevel() < 2) [[unlikely]]
      write(QXPlatform::LogType::default_, category, pieces...);
  }
  template <LogPiece... Pieces>
  void error(LogCategory category, Pieces&&... pieces) const {
    if (globalLoglevel() < 3) [[unlikely]]
      write(QXPlatform::LogType::error, category, pieces...);
  }
  template <LogPiece... Pieces>
  void fault(LogCategory category, Pieces&&... pieces) const {
    if (globalLoglevel() < 4) [[unlikely]]
      write(QXPlatform::LogType::fault, category, pieces...);
  }

  // The host's spelling of the same four.
  void debugWithCatgeory(LogCategory category, std::string_view message) const { debug(category, message); }
  void warnWithCatgeory(LogCategory category, std::string_view message) const { warn(category, message); }
  void errorWithCatgeory(LogCategory category, std::string_view message) const { error(category, message); }
  void faultWithCatgeory(LogCategory category, std::string_view message) const { fault(category, message); }

 private:
  template <typename Piece>
  static void append(std::string& message, const Piece& piece) {
    if constexpr (std::convertible_to<const Piece&, std::string_view>) {
      message += std::string_view(piece);
    } else if constexpr (std::same_as<Piece, bool>) {
      message += piece ? "true" : "false";
    } else if constexpr (std::integral<Piece>) {
      message += std::to_string(piece);
    } else if constexpr (requires { piece.description(); }) {
      message += piece.description();
    } else {
      message += description(piece);
    }
  }

  template <typename... Pieces>
  [[gnu::noinline, gnu::cold]] void write(QXPlatform::LogType type, LogCategory category,
                                          const Pieces&... pieces) const {
    std::string message;
    (append(message, pieces), ...);
    print(type, category, message);
  }

  void print(QXPlatform::LogType type, LogCategory category, std::string_view message) const;

  static std::atomic<std::int64_t> globalLoglevel_;

  const LogSubSystem subSystem_;
  const std::unique_ptr<const LogPrinter> logPrinter_;
};

}  // namespace QXExtensionSDK
