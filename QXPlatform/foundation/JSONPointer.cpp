#include "QXPlatform/foundation/JSONPointer.h"

namespace QXPlatform {

void JSONPointer::prependKey(std::string_view key) {
  std::string step = "/";
  for (const char character : key) {
    if (character == '~') {
      step += "~0";
    } else if (character == '/') {
      step += "~1";
    } else {
      step += character;
    }
  }
  text_.insert(0, step);
}

void JSONPointer::prependIndex(std::size_t index) {
  text_.insert(0, std::to_string(index)).insert(0, 1, '/');
}

}  // namespace QXPlatform
