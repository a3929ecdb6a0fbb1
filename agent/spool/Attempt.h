#pragma once

#include <string>
#include <string_view>

#include "QXPlatform/log/Log.h"
#include "agent/spool/Database.h"

namespace QXAgent {

inline void logDatabaseFailure(std::string_view what, const DatabaseError& error) {
  const std::string message = std::string(what) + ": " + error.message;
  QXPlatform::os_log({"qx-agent", "Spool", QXPlatform::LogType::error, message});
}

// Does what may fail; when it does, logs it and gives the other value.
template <typename Value, typename Operation>
Value attempt(std::string_view what, Value otherwise, const Operation& operation) {
  try {
    return operation();
  } catch (const DatabaseError& error) {
    logDatabaseFailure(what, error);
    return otherwise;
  }
}

template <typename Operation>
void attempt(std::string_view what, const Operation& operation) {
  attempt(what, false, [&] {
    operation();
    return true;
  });
}

}  // namespace QXAgent
