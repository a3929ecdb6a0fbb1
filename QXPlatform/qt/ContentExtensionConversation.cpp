#include "QXPlatform/qt/ContentExtensionConversation.h"

#include <unistd.h>

#include <QApplication>
#include <array>
#include <cerrno>
#include <iostream>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/PushLines.h"

namespace QXPlatform {

namespace {

void write(const Dictionary& line) {
  const auto text = writeJSON(line, JSONStyle::compact);
  std::cout << (text ? *text : line.description()) << std::endl;
}

}  // namespace

ContentExtensionConversation::ContentExtensionConversation(ContentExtensionHost& host)
    : driver_(host, write), notifier_(STDIN_FILENO, QSocketNotifier::Read) {
  QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { readInput(); });
}

bool ContentExtensionConversation::run() {
  QApplication::exec();
  return static_cast<bool>(std::cout);
}

// A command may run the application's events, in the middle of which none other begins.
void ContentExtensionConversation::readInput() {
  std::array<char, 16384> piece{};
  const ssize_t count = ::read(STDIN_FILENO, piece.data(), piece.size());
  if (count < 0 && errno == EINTR) return;
  notifier_.setEnabled(false);
  if (count <= 0) return QApplication::quit();
  input_.append(piece.data(), static_cast<std::size_t>(count));
  for (std::size_t end = input_.find('\n'); end != std::string::npos; end = input_.find('\n')) {
    const std::string line = input_.substr(0, end);
    input_.erase(0, end + 1);
    answer(line);
  }
  notifier_.setEnabled(true);
}

void ContentExtensionConversation::answer(const std::string& line) {
  const auto command = parseJSON(line, kFullRequestLimits);
  if (!command) return write({{"error", command.error().message}});
  const auto fields = command->dictionary();
  if (!fields) return write({{"error", "no command"}});
  const auto result = driver_.carryOut(*fields);
  write(result ? *result : Dictionary{{"step", (*fields)["step"]}, {"error", result.error().message}});
}

}  // namespace QXPlatform
