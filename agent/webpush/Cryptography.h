#pragma once

#include <string>
#include <string_view>

#include "QXPlatform/foundation/FatalError.h"

namespace QXAgent {

// Text as the cryptographic library takes it.
inline const unsigned char* octets(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

inline unsigned char* octets(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

// For steps at which the library fails for want of memory or randomness alone.
inline void require(bool done) {
  if (!done) QXPlatform::fatalError("The cryptographic library cannot work");
}

}  // namespace QXAgent
