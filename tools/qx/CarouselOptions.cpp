#include "tools/qx/CarouselOptions.h"

#include <utility>

#include "QXPlatform/foundation/JSON.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;
using QXPlatform::Value;

template <typename T>
Value orNull(const std::optional<T>& value) {
  return value ? Value(*value) : Value();
}

Value orNull(const std::optional<std::filesystem::path>& path) {
  return path ? Value(path->string()) : Value();
}

bool flag(const Value& values, std::string_view key) {
  const Value* value = values.find(key);
  return value != nullptr && value->boolean().value_or(false);
}

std::optional<int> integer(const Value& values, std::string_view key) {
  const Value* value = values.find(key);
  if (value == nullptr || !value->integer()) return std::nullopt;
  return static_cast<int>(*value->integer());
}

std::optional<std::string> text(const Value& values, std::string_view key) {
  const Value* value = values.find(key);
  if (value == nullptr || !value->string()) return std::nullopt;
  return std::string(*value->string());
}

std::optional<double> number(const Value& values, std::string_view key) {
  const Value* value = values.find(key);
  return value == nullptr ? std::nullopt : value->number();
}

}  // namespace

// The containers' root and the bundle travel in the environment.
std::string encodeInvocation(const CarouselInvocation& invocation) {
  const CarouselOptions& carousel = invocation.carousel;
  const SimulatorOptions& simulator = invocation.simulator;
  return Dictionary{{"file", carousel.file},
                    {"png", orNull(carousel.png)},
                    {"panel", orNull(carousel.panel)},
                    {"all", carousel.all},
                    {"width", carousel.width},
                    {"scale", orNull(carousel.scale)},
                    {"dark", carousel.dark},
                    {"rtl", carousel.rtl},
                    {"steps", orNull(carousel.steps)},
                    {"logLevel", static_cast<std::int64_t>(simulator.logLevel)},
                    {"jsonLog", simulator.logFormat == LogFormat::json},
                    {"pretty", simulator.pretty}}
      .description();
}

Result<CarouselInvocation> decodeInvocation(std::string_view argument) {
  const auto values = QXPlatform::parseJSON(argument);
  if (!values) return values.error();
  auto file = text(*values, "file");
  const auto width = integer(*values, "width");
  const auto logLevel = integer(*values, "logLevel");
  if (!file || !width || !logLevel) return Error{"to be started by qx carousel"};

  CarouselInvocation invocation;
  invocation.carousel = {.file = *std::move(file),
                         .png = text(*values, "png"),
                         .panel = integer(*values, "panel"),
                         .all = flag(*values, "all"),
                         .width = *width,
                         .scale = number(*values, "scale"),
                         .dark = flag(*values, "dark"),
                         .rtl = flag(*values, "rtl"),
                         .steps = text(*values, "steps")};
  invocation.simulator.logLevel = static_cast<QXExtensionSDK::LogLevel>(*logLevel);
  invocation.simulator.logFormat = flag(*values, "jsonLog") ? LogFormat::json : LogFormat::text;
  invocation.simulator.pretty = flag(*values, "pretty");
  return invocation;
}

}  // namespace qx
