// The simulator's command line: the only file that knows the argument parser.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "QXExtensionSDK/Version.h"
#include "QXExtensionSDK/runtime/VTQXNotificationService.h"
#include "QXPlatform/foundation/MemoryUse.h"
#include "QXPlatform/notifications/ServiceExtensionHost.h"
#include "tools/qx/AuthoringCommands.h"
#include "tools/qx/BackendCommand.h"
#include "tools/qx/CarouselCommand.h"
#include "tools/qx/CarouselSteps.h"
#include "tools/qx/ContextCommands.h"
#include "tools/qx/HostCommands.h"
#include "tools/qx/NearestWord.h"
#include "tools/qx/PushCommand.h"
#include "tools/qx/Results.h"
#include "tools/qx/SendCommand.h"
#include "tools/qx/SimulatorOptions.h"
#include "tools/qx/check/CheckCommand.h"
#include "tools/qx/demo/DemoCommand.h"

namespace {

using AppGroupSDK::ExtensionModuleName;

constexpr int kWrongUsage = 2;

// What the arguments say.
struct Invocation {
  qx::SimulatorOptions simulator;
  std::function<int()> command;  // gives the exit code
};

template <typename Options>
struct Subcommand {
  CLI::App& app;
  Options& options;  // lives as long as the app
};

// A subcommand that runs with options of its own.
template <typename Options, typename Run>
Subcommand<Options> addSubcommand(CLI::App& parent, const std::string& name, const std::string& description,
                                  const std::string& footer, Invocation& invocation, Run run) {
  CLI::App& app = *parent.add_subcommand(name, description);
  app.footer(footer);
  const auto options = std::make_shared<Options>();
  app.callback([=, &invocation] {
    invocation.command = [=, &invocation] { return run(invocation.simulator, *options); };
  });
  return {app, *options};
}

// One that has none.
void addSubcommand(CLI::App& parent, const std::string& name, const std::string& description,
                   const std::string& footer, Invocation& invocation,
                   int (*run)(const qx::SimulatorOptions&)) {
  struct None {};
  addSubcommand<None>(parent, name, description, footer, invocation,
                      [run](const qx::SimulatorOptions& simulator, None) { return run(simulator); });
}

// One that only gathers others.
CLI::App& addGroup(CLI::App& parent, const std::string& name, const std::string& description,
                   const std::string& footer) {
  CLI::App& app = *parent.add_subcommand(name, description);
  app.footer(footer);
  app.require_subcommand(1);
  return app;
}

// One of a few words, each of which the parser then reads by the number behind it. (The parser's own
// transformer takes the numbers as well.)
template <typename Value>
CLI::Validator oneOf(const std::vector<std::pair<std::string, Value>>& words) {
  std::string list;
  for (const auto& [word, value] : words) list += (list.empty() ? "" : ",") + word;
  const auto toNumber = [=](std::string& text) {
    const auto found = std::ranges::find(words, text, &std::pair<std::string, Value>::first);
    if (found == words.end()) return text + " is not one of " + list;
    text = std::to_string(static_cast<std::int64_t>(found->second));
    return std::string();
  };
  return {toNumber, "{" + list + "}"};
}

// One of an enumeration's names.
template <typename Enumeration>
CLI::Validator nameOf() {
  std::vector<std::pair<std::string, Enumeration>> names;
  for (const auto& [value, name] : rawValues(QXPlatform::RawValuesOf<Enumeration>())) {
    names.emplace_back(name, value);
  }
  return oneOf(names);
}

// A number that passes the test; what is no number does not. (The parser's own ranges let NaN pass.)
template <typename Number>
CLI::Validator number(bool (*isGood)(Number), const std::string& demand) {
  return {[=](const std::string& text) {
            Number value{};
            const char* end = text.data() + text.size();
            const auto read = std::from_chars(text.data(), end, value);
            return read.ec == std::errc() && read.ptr == end && isGood(value) ? std::string() : demand;
          },
          ""};
}

void addSimulatorOptions(CLI::App& app, qx::SimulatorOptions& options) {
  app.add_option("--groups-root", options.groupsRoot, "Directory that holds the app groups' containers")
      ->type_name("DIR");
  app.add_option("--bundle", options.bundle, "Host bundle whose Info.plist is read")
      ->type_name("DIR")
      ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
  app.add_option("--log-level", options.logLevel, "Level that the simulated host asks for")
      ->type_name("LEVEL")
      ->transform(nameOf<QXExtensionSDK::LogLevel>());
  app.add_option("--log-format", options.logFormat, "How log lines are written to standard error")
      ->type_name("FORMAT")
      ->transform(nameOf<qx::LogFormat>());
  app.add_flag("--pretty", options.pretty, "Indent the results");
  app.add_flag("--json", options.json, "Results as JSON on a terminal too");
}

void addStable(CLI::App& command, qx::SimulatorOptions& options) {
  command.add_flag("--stable", options.stable, "Results that are the same in every run");
}

void addJUnit(CLI::App& command, std::optional<std::string>& file) {
  command.add_option("--junit", file, "Also write a test report with one case a push")->type_name("FILE");
}

constexpr double kDay = QXPlatform::ServiceExtensionHost::kLongestTimeLimit.count();

void addPush(CLI::App& app, Invocation& invocation) {
  const auto [push, options] = addSubcommand<qx::PushOptions>(
      app, "push", "Send pushes through the service extension",
      "Example:\n  echo '{\"aps\": {\"alert\": \"Hello\"}, \"_sid\": \"VTQX\"}' | qx push -\n\n"
      "A file is one push; a .ndjson file and standard input hold one a line.\n"
      "Thumbnails stay where the results' URLs say: in one directory a run, under the temporary one unless\n"
      "--attachments names another.",
      invocation, qx::runPush);
  push.add_option("FILE", options.files, "Files with pushes; - or none for standard input")->type_name("");
  push.add_option("--time-limit", options.timeLimitSeconds, "Time limit of the extension, a day at most")
      ->type_name("SECONDS")
      ->check(number<double>([](double seconds) { return seconds > 0 && seconds <= kDay; },
                             "must be above 0 and at most a day"))
      ->capture_default_str();
  constexpr std::size_t kMostJobs = QXExtensionSDK::VTQXNotificationService::kMostNotificationsAtOnce;
  push.add_option("--jobs", options.jobs,
                  "Pushes at the same time, 16 at most: more would wait for each other's threads")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, kMostJobs).description(""))
      ->capture_default_str();
  push.add_option("--attachments", options.attachments,
                  "Where thumbnails go; \"none\" removes them at the end")
      ->type_name("DIR");
  push.add_option("--identifier", options.identifier,
                  "Name of the push; of several each has its number behind it")
      ->type_name("TEXT");
  push.add_option("--fail-on", options.failOn, "Exit code 1 when one of these happened")
      ->type_name("LIST")
      ->delimiter(',')
      ->transform(nameOf<qx::PushFailure>());
  addJUnit(push, options.junit);
  addStable(push, invocation.simulator);
  auto* program = push.add_option("--extension", options.extension,
                                  "A host's own service-extension program; its own log level wins")
                      ->type_name("PROGRAM")
                      ->check(CLI::Validator(CLI::ExistingFile).description(""));
  auto* changes =
      push.add_option("--hook-changes", options.hookChanges, "userInfo changes that the host's hook reports")
          ->type_name("JSON");
  auto* raise = push.add_option("--hook-raise", options.hookRaise, "The host's hook raises an exception")
                    ->type_name("REASON");
  auto* hang = push.add_flag("--hook-hang", options.hookHang, "The host's hook never completes");
  auto* noThumbnail = push.add_flag("--no-thumbnail", options.noThumbnail, "The host wants no thumbnails");
  for (auto* builtInOnly : {changes, raise, hang, noThumbnail}) program->excludes(builtInOnly);
  changes->excludes(raise)->excludes(hang);
  raise->excludes(hang);
}

std::string checkSteps(const std::string& text) {
  const auto steps = qx::parseCarouselSteps(text);
  return steps ? std::string() : steps.error().message;
}

void addCarousel(CLI::App& app, Invocation& invocation) {
  constexpr int kNarrowest = 112;  // the arrows side by side
  constexpr int kWidest = 10'000;
  const auto [carousel, options] = addSubcommand<qx::CarouselOptions>(
      app, "carousel", "Show a push's carousel as the content extension draws it",
      "Examples:\n  qx carousel push.json\n  qx carousel push.json --png out.png --all --dark\n"
      "  qx carousel push.json --do next,wait:500,tap\n"
      "  qx carousel --watch push.json\n  qx carousel --gallery gallery.html pushes/\n\n"
      "Without --png and --do a window opens. Arrow keys move, Return opens, Escape closes.\n"
      "How the carousel stands is reported after loading and after each step.",
      invocation, qx::runCarousel);
  carousel
      .add_option("FILE", options.files,
                  "File with one push; - for standard input; a gallery takes as many as there are, and "
                  "directories")
      ->type_name("")
      ->required();
  auto* png = carousel.add_option("--png", options.png, "Draw into this file instead of opening a window")
                  ->type_name("OUT.png");
  auto* panel =
      carousel.add_option("--panel", options.panel, "Draw this panel, counted from 0")
          ->type_name("N")
          ->check(number<int>([](int index) { return index >= 0; }, "must be a whole number of at least 0"))
          ->needs(png);
  carousel.add_flag("--all", options.all, "Draw every panel: OUT-0.png, OUT-1.png, ...")
      ->needs(png)
      ->excludes(panel);
  auto* width = carousel.add_option("--width", options.width, "Room there is from left to right")
                    ->type_name("POINTS")
                    ->check(CLI::Range(kNarrowest, kWidest))
                    ->capture_default_str();
  carousel.add_option("--scale", options.scale, "Pixels a point [2 for a drawing]")
      ->type_name("F")
      ->check(number<double>([](double scale) { return scale >= 1 && scale <= 8; }, "must be from 1 to 8"));
  carousel.add_option("--extension", options.extension, "A host's own content-extension program")
      ->type_name("PROGRAM")
      ->check(CLI::Validator(CLI::ExistingFile).description(""));
  auto* gallery =
      carousel
          .add_option(
              "--gallery", options.gallery,
              "Write a page with every panel in light and dark, both directions, two widths and with large "
              "text, beside what check finds")
          ->type_name("OUT.html")
          ->excludes(png);
  width->excludes(gallery);
  auto* watch =
      carousel.add_flag("--watch", options.watch, "Redraw whenever the file changes, with its findings")
          ->excludes(png)
          ->excludes(gallery);
  carousel.add_flag("--dark", options.dark, "Dark appearance")->excludes(gallery);
  carousel.add_flag("--rtl", options.rtl, "Read from right to left")->excludes(gallery);
  carousel.add_option("--do", options.steps, "Steps in order: next, back, tick, tap, refresh:FILE, wait:MS")
      ->type_name("STEPS")
      ->excludes(gallery)
      ->excludes(watch)
      ->check(CLI::Validator(checkSteps, ""));
  carousel.add_option("--fail-on", options.failOnFailedImage, "Exit code 1 when it happens")
      ->type_name("LIST")
      ->transform(oneOf<bool>({{"failed-image", true}}));
  addStable(carousel, invocation.simulator);
  carousel.parse_complete_callback([&options = options] {
    if (options.files.size() > 1 && !options.gallery) {
      throw CLI::ValidationError("FILE", "only --gallery takes several");
    }
    if (options.watch && options.files.front() == "-") {
      throw CLI::ValidationError("--watch", "standard input cannot be followed");
    }
    if (options.watch && options.files.front().ends_with(".ndjson")) {
      throw CLI::ValidationError("--watch", "follows a file with one push, not an .ndjson file");
    }
    const double pixels = options.width * options.scale.value_or(qx::kDrawingScale);
    if (pixels <= qx::kMostPixelsAcross) return;
    throw CLI::ValidationError("--width times --scale",
                               "must be at most " + std::to_string(qx::kMostPixelsAcross) + " pixels");
  });
}

CLI::Validator moduleNames() {
  std::vector<std::pair<std::string, ExtensionModuleName>> names;
  for (const auto module : rawValues(QXPlatform::RawValuesOf<ExtensionModuleName>())) {
    names.emplace_back(stringValue(module), module);
  }
  return oneOf(names);
}

template <typename Value>
CLI::Option* addArgument(CLI::App& command, const std::string& name, Value& value,
                         const std::string& description) {
  return command.add_option(name, value, description)->required()->type_name("");
}

template <typename Value>
CLI::Option* addText(CLI::App& command, const std::string& name, Value& value,
                     const std::string& description) {
  return command.add_option(name, value, description)->type_name("TEXT");
}

void addModuleOption(CLI::App& command, std::optional<ExtensionModuleName>& module) {
  command.add_option("--module", module, "Write the record of this module's stored application id")
      ->type_name("MODULE")
      ->transform(moduleNames());
}

void addHostSetDevice(CLI::App& host, Invocation& invocation) {
  const auto [device, options] = addSubcommand<qx::HostDeviceOptions>(
      host, "set-device", "Store where receipts go and in whose name",
      "Example:\n  qx host set-device --base-url http://127.0.0.1:8080 --application-id A1 \\\n"
      "    --device-id D1 --access-token secret --sdk-version 9.1",
      invocation, qx::runHostSetDevice);
  addText(device, "--base-url", options.baseUrl, "Base URL of the back end")->required();
  addText(device, "--application-id", options.applicationId, "Application id")->required();
  addText(device, "--device-id", options.deviceId, "Device id")->required();
  addText(device, "--access-token", options.accessToken, "Access token")->required();
  addText(device, "--sdk-version", options.sdkVersion, "Version of the host's SDK")->required();
  addText(device, "--subscriber-token", options.subscriberToken, "Subscriber token");
  addText(device, "--tenant-id", options.tenantId, "Tenant id");
  addText(device, "--session-id", options.sessionId, "Session id");
  addModuleOption(device, options.module);
}

void addHostReceipts(CLI::App& host, Invocation& invocation) {
  const auto [receipts, options] = addSubcommand<qx::HostReceiptsOptions>(
      host, "receipts", "Switch delivery receipts on or off", "Example:\n  qx host receipts on", invocation,
      qx::runHostReceipts);
  addArgument(receipts, "STATE", options.on, "on or off")
      ->transform(oneOf<bool>({{"on", true}, {"off", false}}));
  addModuleOption(receipts, options.module);
}

void addHostMapApp(CLI::App& host, Invocation& invocation) {
  const auto [map, options] = addSubcommand<qx::HostMapAppOptions>(
      host, "map-app", "Store the application id of a module",
      "Example:\n  qx host map-app quorixEngagement A1", invocation, qx::runHostMapApp);
  addArgument(map, "MODULE", options.module, "Module")->transform(moduleNames());
  addArgument(map, "APPID", options.appId, "Application id");
}

// A command whose only argument is a module.
void addHostQuestion(CLI::App& host, const std::string& name, const std::string& description,
                     Invocation& invocation, int (*run)(const qx::SimulatorOptions&, ExtensionModuleName)) {
  const auto [question, module] = addSubcommand<ExtensionModuleName>(
      host, name, description, "Example:\n  qx host " + name + " quorixEngagement", invocation, run);
  addArgument(question, "MODULE", module, "Module")->transform(moduleNames());
}

void addHost(CLI::App& app, Invocation& invocation) {
  CLI::App& host = addGroup(app, "host", "Play the host application: write and read the shared records",
                            "Example:\n  qx host init && qx host receipts on && qx host show");
  addStable(host, invocation.simulator);
  addSubcommand(host, "init", "Make the app group's container if it is not there",
                "Example:\n  qx host init --groups-root /tmp/groups", invocation, qx::runHostInit);
  addHostSetDevice(host, invocation);
  addHostReceipts(host, invocation);
  addHostMapApp(host, invocation);
  addSubcommand(host, "show", "List every record: its file, its status, its value",
                "Example:\n  qx host show --pretty", invocation, qx::runHostShow);
  addHostQuestion(host, "pending", "List a module's receipts that have not been delivered", invocation,
                  qx::runHostPending);
  addHostQuestion(host, "last-click", "Print a module's last carousel click", invocation,
                  qx::runHostLastClick);
}

void addPushInput(CLI::App& command, qx::PushInput& input) {
  addArgument(command, "FILE", input.files,
              "Files with pushes, directories of them, or - for standard input; .ndjson holds one a line");
  command.add_option("--jobs", input.jobs, "Pushes at the same time")
      ->type_name("N")
      ->check(CLI::Range(1, 256).description(""))
      ->capture_default_str();
}

void addCheck(CLI::App& app, Invocation& invocation) {
  const auto [check, options] = addSubcommand<qx::CheckOptions>(
      app, "check", "Say what a device would refuse, ignore or replace in a push",
      "Examples:\n  qx check push.json\n  qx check --strict --format github pushes/\n\n"
      "An error keeps a device from showing the push as it is meant, a warning costs something less. The\n"
      "places of a compressed carousel begin with /_rf too, where a device finds it.",
      invocation, qx::runCheck);
  addPushInput(check, options.input);
  check.add_option("--format", options.format, "How findings are written [text on a terminal, else json]")
      ->type_name("FORMAT")
      ->transform(nameOf<qx::FindingFormat>());
  check.add_flag("--strict", options.strict, "Warnings fail as well");
  addJUnit(check, options.junit);
  check.add_option("--limit", options.limit, "Whose size limit counts: 4096 bytes of apns, 3993 of web-push")
      ->type_name("LIMIT")
      ->transform(nameOf<qx::PushLimit>());
}

// Commands that make another push of each push.
void addPacking(CLI::App& app, Invocation& invocation) {
  const auto add = [&](const std::string& name, const std::string& description, const std::string& footer,
                       int (*run)(const qx::SimulatorOptions&, const qx::PushInput&)) {
    const auto [command, input] =
        addSubcommand<qx::PushInput>(app, name, description, footer, invocation, run);
    addPushInput(command, input);
  };
  add("pack", "Compress a push's carousel: \"_rf\" becomes \"$_rf\"",
      "Example:\n  qx pack push.json > packed.json\n\nSays the push's size before and after.", qx::runPack);
  add("unpack", "Inflate a push's carousel: \"$_rf\" becomes \"_rf\"",
      "Examples:\n  qx unpack packed.json --pretty\n  qx pack push.json | qx unpack -", qx::runUnpack);
}

void addSend(CLI::App& app, Invocation& invocation) {
  constexpr int kLongestTTL = 28 * 24 * 3600;
  const auto [send, options] = addSubcommand<qx::SendOptions>(
      app, "send", "Seal a push for a Web Push subscription and post it",
      "Examples:\n  qx-agent endpoint --app com.example.Shop > subscription.json\n"
      "  qx send --subscription subscription.json push.json\n\n"
      "Prints the answer of the push service. A sender's key is made when there is none.",
      invocation, qx::runSend);
  addArgument(send, "PUSH", options.push, "File with a push; - for standard input");
  send.add_option("--subscription", options.subscription, "Endpoint and keys of the receiver")
      ->type_name("FILE")
      ->required();
  auto* vapid =
      send.add_option("--vapid", options.vapid, "Key and address of the sender [in $XDG_STATE_HOME]")
          ->type_name("FILE");
  auto* ttl = send.add_option("--ttl", options.ttlSeconds, "How long the push service keeps the push")
                  ->type_name("SECONDS")
                  ->check(CLI::Range(0, kLongestTTL))
                  ->capture_default_str();
  send.add_flag("--seal-only", options.sealOnly, "Write the sealed body to standard output instead")
      ->excludes(vapid)
      ->excludes(ttl);
}

void addBitSet(CLI::App& command, const std::string& name, std::int64_t& value,
               const std::string& description) {
  command.add_option(name, value, description)
      ->required()
      ->type_name("N")
      ->check(number<std::int64_t>([](std::int64_t sum) { return sum >= 0; },
                                   "must be a whole number of at least 0"));
}

void addContext(CLI::App& app, Invocation& invocation) {
  CLI::App& context = addGroup(app, "context", "Write and read the push context, \"_co\"",
                               "Example:\n  qx context decode Mzo2OkJVLTc=");
  const auto [encode, options] = addSubcommand<qx::ContextEncodeOptions>(
      context, "encode", "Make the text of a push context",
      "Example:\n  qx context encode --source 3 --destinations 6 --business-unit BU-7", invocation,
      qx::runContextEncode);
  addBitSet(encode, "--source", options.source, "Sum of the sources, 1 and 2");
  addBitSet(encode, "--destinations", options.destinations, "Sum of 1 (engagement) and 2 (app messaging)");
  encode.add_option("--business-unit", options.businessUnit, "Business unit id, without a colon")
      ->type_name("ID");

  const auto [decode, text] = addSubcommand<std::string>(
      context, "decode", "Say what a device reads from a push context",
      "Example:\n  qx context decode Mzo2OkJVLTc=", invocation, qx::runContextDecode);
  addArgument(decode, "TEXT", text, "Text of \"_co\"");
}

void addBackend(CLI::App& app, Invocation& invocation) {
  const auto [backend, options] = addSubcommand<qx::BackendOptions>(
      app, "backend", "Play the back end on the loopback and print requests",
      "Examples:\n  qx backend --port 8080 --status 503\n"
      "  qx backend --port 8080 --script answers.json --expect 2 --within 10\n\n"
      "Prints where it listens, then every request; ends on SIGINT or SIGTERM. A script is a list of\n"
      "{\"path\", \"method\", \"times\", \"status\", \"headers\", \"body\", \"delay\", \"close\"}, of which "
      "the first answers\n"
      "that fits a request and is not used up.",
      invocation, qx::runBackend);
  backend.add_option("--port", options.port, "Port to listen on; 0: a free one")
      ->type_name("P")
      ->check(CLI::Range(0, 65535).description(""));
  backend.add_option("--status", options.status, "Status of every answer")
      ->type_name("N")
      ->check(CLI::Range(100, 599))
      ->capture_default_str();
  backend.add_option("--delay", options.delaySeconds, "Time before every answer")
      ->type_name("SECONDS")
      ->check(number<double>([](double seconds) { return seconds >= 0 && seconds <= kDay; },
                             "must be at least 0 and at most a day"));
  backend.add_option("--body", options.body, "Body of every answer")
      ->type_name("TEXT")
      ->capture_default_str();
  auto* hang = backend.add_flag("--hang", options.hang, "Never answer");
  backend.add_flag("--close", options.close, "Drop every connection without an answer")->excludes(hang);
  backend.add_option("--files", options.files, "Serve DIR under /files/ instead of the built-in panels")
      ->type_name("DIR")
      ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
  backend.add_flag("--tls", options.tls, "Talk TLS, with a throw-away certificate");
  backend.add_option("--script", options.script, "Answers by request and in sequence, before all others")
      ->type_name("FILE");
  auto* expect = backend.add_option("--expect", options.expect, "End when so many POST requests have come")
                     ->type_name("N")
                     ->check(number<std::int64_t>([](std::int64_t count) { return count >= 1; },
                                                  "must be a whole number of at least 1"));
  auto* within = backend.add_option("--within", options.withinSeconds, "How long to wait for them")
                     ->type_name("SECONDS")
                     ->check(number<double>([](double seconds) { return seconds > 0 && seconds <= kDay; },
                                            "must be above 0 and at most a day"))
                     ->needs(expect);
  expect->needs(within);
}

void addDemo(CLI::App& app, Invocation& invocation) {
  addSubcommand(app, "demo", "Show everything at once, on data of its own",
                "Example:\n  qx demo\n\nLeaves what was sent, shown and received in ./qx-demo/.", invocation,
                qx::runDemo);
}

// The command whose arguments were being read when something was not understood.
const CLI::App& innermost(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? app : innermost(*chosen.back());
}

// What could stand where a command's arguments do.
std::vector<std::string> knownWords(const CLI::App& app, bool options) {
  std::vector<std::string> words;
  if (!options) {
    for (const auto* command : app.get_subcommands({})) words.push_back(command->get_name());
    return words;
  }
  for (const CLI::App* level = &app; level != nullptr; level = level->get_parent()) {
    for (const auto* option : level->get_options()) {
      for (const std::string& name : option->get_lnames()) words.push_back("--" + name);
    }
  }
  return words;
}

std::string explainUnknown(const CLI::App& app, const std::string& word) {
  const bool isOption = word.starts_with('-');
  const auto meant = qx::nearestWord(word.substr(0, word.find('=')), knownWords(innermost(app), isOption));
  if (meant && *meant == word.substr(0, word.find('='))) {
    return "qx: write " + word + " after " + innermost(app).get_name() + "\n";
  }
  const std::string hint = meant ? "; did you mean " + *meant + "?" : "";
  return "qx: there is no " + std::string(isOption ? "option " : "command ") + word + hint +
         "\nRun with --help for more information.\n";
}

// What was not understood is the reason for whatever else is wrong.
std::string explainWrongUsage(const CLI::App* app, const CLI::Error& error) {
  const auto unknown = app->remaining(true);
  return unknown.empty() ? CLI::FailureMessage::simple(app, error) : explainUnknown(*app, unknown.front());
}

// `qx help push` is `qx push --help`.
std::vector<std::string> wordsOf(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  const auto asked = std::ranges::find_if(words, [](const std::string& word) { return word != "help"; });
  if (asked != words.begin()) {
    words.erase(words.begin(), asked);
    words.emplace_back("--help");
  }
  return words;
}

// Help is no answer to what was not understood.
int exitAfter(const CLI::App& app, const CLI::ParseError& error) {
  const auto unknown = app.remaining(true);
  if (error.get_exit_code() != 0 || unknown.empty())
    return app.exit(error) == 0 ? qx::finish(0) : kWrongUsage;
  std::cerr << explainUnknown(app, unknown.front());
  return kWrongUsage;
}

int run(Invocation& invocation) {
  auto& simulator = invocation.simulator;
  if (!simulator.bundle) simulator.bundle = qx::bundleFromEnvironment();
  qx::applyEnvironment(simulator);
  return qx::finish(invocation.command());
}

}  // namespace

int main(int argc, char** argv) {
  QXPlatform::keepMemoryUseEven();
  // Nothing here writes by C's functions, whose buffer each result would be copied to first.
  std::ios::sync_with_stdio(false);
  CLI::App app("qx: plays the operating system, the host application and the back end around QXExtensionSDK",
               "qx");
  app.set_version_flag("--version",
                       reinterpret_cast<const char*>(QXExtensionSDK::QXExtensionSDKVersionString));
  app.require_subcommand(1);
  app.fallthrough();
  app.footer("qx help COMMAND explains a command, with an example.");
  app.failure_message(explainWrongUsage);

  Invocation invocation;
  addSimulatorOptions(app, invocation.simulator);
  addPush(app, invocation);
  addCarousel(app, invocation);
  addCheck(app, invocation);
  addPacking(app, invocation);
  addSend(app, invocation);
  addHost(app, invocation);
  addBackend(app, invocation);
  addContext(app, invocation);
  addDemo(app, invocation);

  try {
    auto words = wordsOf(argc, argv);
    std::ranges::reverse(words);  // as the parser takes them
    app.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    return exitAfter(app, error);
  }
  // A reader of our output, or an extension, that goes away is an error to report, not the end.
  std::signal(SIGPIPE, SIG_IGN);
  // So is a file that may not grow.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    return run(invocation);
  } catch (const std::exception& error) {
    std::cerr << "qx: " << error.what() << '\n';
    return 1;
  }
}
