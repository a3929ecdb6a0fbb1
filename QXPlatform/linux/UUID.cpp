#include "QXPlatform/foundation/UUID.h"

#include <sys/random.h>

#include <array>
#include <cstddef>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/FatalError.h"

namespace QXPlatform {

std::string makeUUIDString() {
  std::array<unsigned char, 16> bytes;
  // So few bytes are never handed out in part, nor cut short by a signal.
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    fatalError("The system has no random numbers");
  }
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U);

  std::string text;
  text.reserve(36);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    appendHexByte(text, bytes[i], kUppercaseHexDigits);
  }
  return text;
}

}  // namespace QXPlatform
