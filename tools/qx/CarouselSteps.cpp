#include "tools/qx/CarouselSteps.h"

#include <charconv>
#include <optional>
#include <utility>

namespace qx {

namespace {

using Kind = CarouselStep::Kind;

constexpr std::int64_t kLongestWait = 3'600'000;

std::optional<std::chrono::milliseconds> readTime(std::string_view text) {
  std::int64_t milliseconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), milliseconds);
  const bool isNumber = error == std::errc() && end == text.data() + text.size();
  if (!isNumber || milliseconds < 0 || milliseconds > kLongestWait) return std::nullopt;
  return std::chrono::milliseconds(milliseconds);
}

std::optional<CarouselStep> parseStep(std::string_view text) {
  const std::size_t colon = text.find(':');
  const auto kind = QXPlatform::fromRawValue<Kind>(text.substr(0, colon));
  const bool takesArgument = kind == Kind::refresh || kind == Kind::wait;
  if (!kind || takesArgument != (colon != std::string_view::npos)) return std::nullopt;
  const std::string_view argument = takesArgument ? text.substr(colon + 1) : std::string_view();
  if (kind == Kind::refresh) {
    return argument.empty() ? std::nullopt : std::optional(CarouselStep{*kind, std::string(argument)});
  }
  if (kind != Kind::wait) return CarouselStep{*kind};
  const auto time = readTime(argument);
  return time ? std::optional(CarouselStep{*kind, {}, *time}) : std::nullopt;
}

}  // namespace

QXPlatform::Result<std::vector<CarouselStep>> parseCarouselSteps(std::string_view text) {
  std::vector<CarouselStep> steps;
  for (;;) {
    const std::size_t comma = text.find(',');
    auto step = parseStep(text.substr(0, comma));
    if (!step) {
      return QXPlatform::Error{"no such step: '" + std::string(text.substr(0, comma)) +
                               "' (next, back, tick, tap, refresh:FILE, wait:MS)"};
    }
    steps.push_back(*std::move(step));
    if (comma == std::string_view::npos) return steps;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace qx
