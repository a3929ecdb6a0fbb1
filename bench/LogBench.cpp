#include <benchmark/benchmark.h>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace {

using QXExtensionSDK::LogCategory;
using QXExtensionSDK::Logger;
using QXExtensionSDK::LogLevel;

void BM_FilteredLog(benchmark::State& state) {
  const auto level = Logger::globalLoglevel();
  Logger::setGlobalLoglevel(static_cast<std::int64_t>(LogLevel::none));
  for (auto _ : state) Logger::service().debug(LogCategory::network, "text ", 5);
  Logger::setGlobalLoglevel(level);
}
BENCHMARK(BM_FilteredLog);

}  // namespace
