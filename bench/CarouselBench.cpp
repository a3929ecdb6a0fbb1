// The carousel: from the payload to its first panel, and from panel to panel. 360 points at two pixels each.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <memory>

#include "QXPlatform/ui/Application.h"
#include "bench/ContentStage.h"

namespace {

constexpr double kScale = 2;

std::shared_ptr<const QXPlatform::UNNotificationRequest> makeRequest(std::int64_t panels) {
  return carouselRequest(panels, [](std::int64_t /*panel*/) { return "no address"; });
}

void payloadToFirstPanel(benchmark::State& state) {
  const auto request = makeRequest(state.range(0));
  for (auto _ : state) {
    ContentStage stage(request, kScale);
    stage.draw();
  }
}
BENCHMARK(payloadToFirstPanel)->Arg(1)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);

// To panels that have not been shown before; the way back to the first is not measured.
void stepToANewPanel(benchmark::State& state) {
  const auto request = makeRequest(state.range(0));
  auto stage = std::make_unique<ContentStage>(request, kScale);
  for (auto _ : state) {
    if (!stage->screen().nextButton().isEnabled()) {
      state.PauseTiming();
      stage = std::make_unique<ContentStage>(request, kScale);
      stage->draw();
      state.ResumeTiming();
    }
    stage->screen().nextButton().click();
    stage->draw();
  }
}
BENCHMARK(stepToANewPanel)->Arg(2)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);

// Between panels that have been shown.
void stepToAKnownPanel(benchmark::State& state) {
  ContentStage stage(makeRequest(state.range(0)), kScale);
  bool forward = true;
  for (auto _ : state) {
    (forward ? stage.screen().nextButton() : stage.screen().backButton()).click();
    forward = !forward;
    stage.draw();
  }
}
BENCHMARK(stepToAKnownPanel)->Arg(2)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  qputenv("QT_SCALE_FACTOR", QByteArray::number(kScale));
  const auto application = QXPlatform::makeApplication(QXPlatform::ScreenUse::none);
  benchmark::RunSpecifiedBenchmarks();
}
