#include "QXPlatform/foundation/ThreadNumber.h"

#include <unistd.h>

namespace QXPlatform {

std::int64_t currentThreadNumber() {
  return gettid();
}

}  // namespace QXPlatform
