#include "QXPlatform/log/StandardError.h"

#include <unistd.h>

#include <cerrno>

namespace QXPlatform {

// One write; what the system leaves of it follows.
void writeToStandardError(std::string_view lines) {
  while (!lines.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, lines.data(), lines.size());
    if (written >= 0) {
      lines.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return;
    }
  }
}

}  // namespace QXPlatform
