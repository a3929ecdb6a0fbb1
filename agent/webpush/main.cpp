// The agent's cryptography, a program of its own that lives for one question: the library takes memory that
// an agent which idles all day can do without, and what strangers have sent is taken apart where it can break
// nothing. Without input it prints fresh keys; else the input is keys and a sealed message, and it prints
// "+" and the message, or "-" and why it does not open.

#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

#include "agent/webpush/KeyBytes.h"

namespace {

std::string answer(std::string_view question) {
  if (question.empty()) return QXAgent::toBytes(QXAgent::makeSubscriptionKeys());
  const auto keys = QXAgent::keysFromBytes(question.substr(0, QXAgent::kKeyBytes));
  if (!keys) return "-no keys";
  const auto opened = QXAgent::openMessage(*keys, question.substr(QXAgent::kKeyBytes));
  return opened ? "+" + *opened : "-" + opened.error().message;
}

}  // namespace

int main() {
  const std::string question{std::istreambuf_iterator<char>(std::cin), {}};
  std::cout << answer(question) << std::flush;
  return std::cout ? 0 : 1;
}
