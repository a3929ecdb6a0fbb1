#include "tools/qx/Printable.h"

#include <algorithm>

#include "QXPlatform/foundation/UTF8.h"

namespace qx {

std::string printable(std::string_view text) {
  std::string shown = QXPlatform::replacingInvalidUTF8(text);
  std::ranges::replace_if(
      shown, [](char byte) { return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f; }, ' ');
  // The control characters beyond ASCII are two bytes in UTF-8.
  for (std::size_t at = 0; (at = shown.find('\xC2', at)) != std::string::npos; ++at) {
    if (at + 1 < shown.size() && static_cast<unsigned char>(shown[at + 1]) < 0xA0) shown.replace(at, 2, " ");
  }
  return shown;
}

}  // namespace qx
