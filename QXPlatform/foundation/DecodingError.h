#pragma once

#include <string>

#include "QXPlatform/foundation/JSONPointer.h"

namespace QXPlatform {

// Why a value is not the record that was asked for, and where. Holds no text of the value itself.
struct DecodingError {
  JSONPointer path;
  std::string message;  // "missing", "expected text, found null"

  // "/_rf/vt/it/0/md/ul: missing"
  std::string description() const { return path.text().empty() ? message : path.text() + ": " + message; }

  friend bool operator==(const DecodingError&, const DecodingError&) = default;
};

}  // namespace QXPlatform
