// The simulator's command line: the only file that knows the argument parser.

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>
#include <map>
#include <string>

#include "QXExtensionSDK/runtime/Version.h"
#include "tools/qx/CarouselCommand.h"
#include "tools/qx/CarouselSteps.h"
#include "tools/qx/PushCommand.h"
#include "tools/qx/SimulatorOptions.h"

namespace {

constexpr int kWrongUsage = 2;

void addSimulatorOptions(CLI::App& app, qx::SimulatorOptions& options) {
  using QXExtensionSDK::LogLevel;
  app.add_option("--groups-root", options.groupsRoot, "Directory that holds the app groups' containers")
      ->type_name("DIR");
  app.add_option("--bundle", options.bundle, "Host bundle whose Info.plist is read")
      ->type_name("DIR")
      ->check(CLI::ExistingDirectory);
  app.add_option("--log-level", options.logLevel, "Level that the simulated host asks for")
      ->type_name("LEVEL")
      ->transform(CLI::CheckedTransformer(std::map<std::string, LogLevel>{{"debug", LogLevel::debug},
                                                                          {"warn", LogLevel::warn},
                                                                          {"error", LogLevel::error},
                                                                          {"fault", LogLevel::fault},
                                                                          {"none", LogLevel::none}})
                      .description("{debug,warn,error,fault,none}"));
  app.add_option("--log-format", options.logFormat, "How log lines are written to standard error")
      ->type_name("FORMAT")
      ->transform(CLI::CheckedTransformer(std::map<std::string, qx::LogFormat>{{"text", qx::LogFormat::text},
                                                                               {"json", qx::LogFormat::json}})
                      .description("{text,json}"));
  app.add_flag("--pretty", options.pretty, "Indent the results");
}

CLI::App& addPush(CLI::App& app, qx::PushOptions& options) {
  CLI::App& push = *app.add_subcommand("push", "Send pushes through the service extension");
  push.footer(
      "Example:\n  echo '{\"aps\": {\"alert\": \"Hello\"}, \"_sid\": \"VTQX\"}' | qx push -\n\n"
      "A file is one push; a .ndjson file and standard input hold one a line.");
  push.add_option("FILE", options.files, "Files with pushes; - or none for standard input")->type_name("");
  push.add_option("--time-limit", options.timeLimitSeconds, "Time limit of the extension")
      ->type_name("SECONDS")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  push.add_option("--jobs", options.jobs, "Pushes at the same time")
      ->type_name("N")
      ->check(CLI::Range(1, 64))
      ->capture_default_str();
  auto* program = push.add_option("--extension", options.extension, "A host's own service-extension program")
                      ->type_name("PROGRAM")
                      ->check(CLI::ExistingFile);
  auto* changes =
      push.add_option("--hook-changes", options.hookChanges, "userInfo changes that the host's hook reports")
          ->type_name("JSON");
  auto* raise = push.add_option("--hook-raise", options.hookRaise, "The host's hook raises an exception")
                    ->type_name("REASON");
  auto* hang = push.add_flag("--hook-hang", options.hookHang, "The host's hook never completes");
  auto* noThumbnail = push.add_flag("--no-thumbnail", options.noThumbnail, "The host wants no thumbnails");
  for (auto* hook : {changes, raise, hang, noThumbnail}) program->excludes(hook);
  changes->excludes(raise)->excludes(hang);
  raise->excludes(hang);
  return push;
}

std::string checkSteps(const std::string& text) {
  const auto steps = qx::parseCarouselSteps(text);
  return steps ? std::string() : steps.error().message;
}

CLI::App& addCarousel(CLI::App& app, qx::CarouselOptions& options) {
  constexpr int kWidest = 10'000;
  constexpr double kSmallestScale = 0.5;
  constexpr double kLargestScale = 8;
  CLI::App& carousel =
      *app.add_subcommand("carousel", "Show a push's carousel as the content extension draws it");
  carousel.footer(
      "Examples:\n  qx carousel push.json\n  qx carousel push.json --png out.png --all --dark\n"
      "  qx carousel push.json --do next,wait:500,tap\n\n"
      "Without --png and --do a window opens. Arrow keys move, Return opens, Escape closes.\n"
      "How the carousel stands is reported after loading and after each step.");
  carousel.add_option("FILE", options.file, "File with one push; - for standard input")
      ->type_name("")
      ->required();
  auto* png = carousel.add_option("--png", options.png, "Draw into this file instead of opening a window")
                  ->type_name("OUT.png");
  auto* panel = carousel.add_option("--panel", options.panel, "Draw this panel, counted from 0")
                    ->type_name("N")
                    ->check(CLI::NonNegativeNumber)
                    ->needs(png);
  carousel.add_flag("--all", options.all, "Draw every panel: OUT-0.png, OUT-1.png, ...")
      ->needs(png)
      ->excludes(panel);
  carousel.add_option("--width", options.width, "Room there is from left to right")
      ->type_name("POINTS")
      ->check(CLI::Range(1, kWidest))
      ->capture_default_str();
  carousel.add_option("--scale", options.scale, "Pixels a point [2 for a drawing]")
      ->type_name("F")
      ->check(CLI::Range(kSmallestScale, kLargestScale));
  carousel.add_flag("--dark", options.dark, "Dark appearance");
  carousel.add_flag("--rtl", options.rtl, "Read from right to left");
  carousel.add_option("--do", options.steps, "Steps in order: next, back, tick, tap, refresh:FILE, wait:MS")
      ->type_name("STEPS")
      ->check(CLI::Validator(checkSteps, ""));
  return carousel;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("qx: plays the operating system, the host application and the back end around QXExtensionSDK",
               "qx");
  app.set_version_flag("--version",
                       reinterpret_cast<const char*>(QXExtensionSDK::QXExtensionSDKVersionString));
  app.require_subcommand(1);
  app.fallthrough();

  qx::SimulatorOptions simulator;
  addSimulatorOptions(app, simulator);
  qx::PushOptions push;
  const CLI::App& pushCommand = addPush(app, push);
  qx::CarouselOptions carousel;
  const CLI::App& carouselCommand = addCarousel(app, carousel);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kWrongUsage;
  }
  // A reader of our output, or an extension, that goes away is an error to report, not the end.
  std::signal(SIGPIPE, SIG_IGN);
  std::ios::sync_with_stdio(false);
  qx::applyEnvironment(simulator);
  if (pushCommand.parsed()) return qx::runPush(simulator, push);
  if (carouselCommand.parsed()) return qx::runCarousel(simulator, carousel);
  return kWrongUsage;
}
