#pragma once

#include <charconv>
#include <functional>
#include <string_view>
#include <system_error>
#include <vector>

namespace QXPlatform {

// An option of a program: "--name", or "--name VALUE" when it takes a value.
struct CommandLineOption {
  const char* name;
  bool takesValue;
  std::function<bool(const char* value)> take;  // false refuses the value, which is null when it takes none
};

// Hands each option on a command line to its taker, in order. False when one is unknown, lacks its value or
// is refused, and when anything else stands there. Main thread.
bool readCommandLine(int argc, const char* const* argv, const std::vector<CommandLineOption>& options);

// Above zero, and not above the most; what is not a number is neither.
template <typename Number>
bool readNumber(std::string_view text, Number& number, Number most) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number > 0 && number <= most;
}

}  // namespace QXPlatform
