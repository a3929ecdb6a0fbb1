#pragma once

#include <optional>
#include <string>

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/Value.h"

namespace QXExtensionSDK {

// The ability to turn a dictionary into pretty-printed JSON text. Any thread.
class JSONConvertible {
 public:
  virtual ~JSONConvertible() = default;

  // Whether JSON can hold the dictionary; an error line under the given logger and category when not.
  bool isConvertible(const QXPlatform::Dictionary& dictionary, const Logger& logger,
                     LogCategory category) const;
  // Nothing, after one error line under the given logger and category, for a dictionary that JSON cannot
  // hold.
  virtual std::optional<std::string> jsonString(const QXPlatform::Dictionary& dictionary,
                                                const Logger& logger, LogCategory category) const;
};

}  // namespace QXExtensionSDK
