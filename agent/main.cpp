// The agent's command line: the only file that knows the argument parser.

#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <string>

#include "QXExtensionSDK/Version.h"
#include "agent/Commands.h"

namespace {

constexpr int kWrongUsage = 2;

std::string checkApp(const std::string& app) {
  return QXAgent::isApplicationId(app) ? std::string()
                                       : app + " is no application id, such as com.example.Shop";
}

void addApp(CLI::App& command, std::string& app) {
  command.add_option("--app", app, "The app's id")
      ->type_name("ID")
      ->required()
      ->check(CLI::Validator(checkApp, ""));
}

template <typename Path>
CLI::Option* addProgram(CLI::App& command, const std::string& name, Path& path,
                        const std::string& description) {
  return command.add_option(name, path, description)
      ->type_name("PROGRAM")
      ->check(CLI::Validator(CLI::ExistingFile).description(""));
}

// What the arguments say; the parser itself is gone when the command runs.
struct Invocation {
  QXAgent::Installation installation;
  QXAgent::RunOptions run;
  std::string app;
  std::function<int()> command;
};

void addInstall(CLI::App& program, Invocation& invocation) {
  auto& [app, serviceExtension, contentExtension, bundle, name, icon, distributor, files] =
      invocation.installation;
  CLI::App& install = *program.add_subcommand("install", "Make the agent known to the desktop for an app");
  install.footer(
      "Example:\n  qx-agent install --app com.example.Shop --service-extension /opt/shop/service-extension");
  addApp(install, app);
  addProgram(install, "--service-extension", serviceExtension, "The app's service extension")->required();
  addProgram(install, "--content-extension", contentExtension, "The app's content extension");
  install.add_option("--bundle", bundle, "Directory of the Info.plist that both read")
      ->type_name("DIR")
      ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
  install.add_option("--name", name, "How notifications name the app [its id]")->type_name("NAME");
  install.add_option("--icon", icon, "Icon name or file")->type_name("ICON");
  install.add_option("--distributor", distributor, "The distributor to be used")->type_name("BUS-NAME");
  install.callback(
      [&] { invocation.command = [&] { return QXAgent::runInstall(invocation.installation); }; });
}

void addRun(CLI::App& program, Invocation& invocation) {
  constexpr std::int64_t kDay = 86'400;
  QXAgent::RunOptions& options = invocation.run;
  CLI::App& run = *program.add_subcommand("run", "Deliver an app's pushes; what the bus starts");
  run.footer("Example:\n  mosquitto_sub -t pushes | qx-agent run --app com.example.Shop --source lines");
  addApp(run, options.app);
  run.add_option("--source", options.readsLines,
                 "Where pushes come from: unifiedpush, or lines on standard input [unifiedpush]")
      ->type_name("SOURCE")
      ->transform(
          CLI::CheckedTransformer(std::map<std::string, bool>{{"unifiedpush", false}, {"lines", true}}));
  run.add_option("--idle", options.idleSeconds, "How long it stays with nothing to do")
      ->type_name("SECONDS")
      ->check(CLI::Range(std::int64_t{0}, kDay))
      ->capture_default_str();
  run.callback([&] { invocation.command = [&] { return QXAgent::runAgent(options); }; });
}

void addQuery(CLI::App& program, Invocation& invocation, const char* name, const char* description,
              int (*query)(const std::string&)) {
  CLI::App& subcommand = *program.add_subcommand(name, description);
  subcommand.footer(std::string("Example:\n  qx-agent ") + name + " --app com.example.Shop");
  addApp(subcommand, invocation.app);
  subcommand.callback(
      [&invocation, query] { invocation.command = [&, query] { return query(invocation.app); }; });
}

// The exit code when there is nothing to run.
std::optional<int> parse(int argc, char** argv, Invocation& invocation) {
  CLI::App program("qx-agent: brings pushes through an app's extensions onto the desktop", "qx-agent");
  program.set_version_flag("--version",
                           reinterpret_cast<const char*>(QXExtensionSDK::QXExtensionSDKVersionString));
  program.require_subcommand(1);
  addInstall(program, invocation);
  addRun(program, invocation);
  addQuery(program, invocation, "uninstall", "Undo an installation, and end the registration",
           QXAgent::runUninstall);
  addQuery(program, invocation, "endpoint",
           "Print where pushes for the app are to be sent, registering it if need be", QXAgent::runEndpoint);
  addQuery(program, invocation, "status", "Print what became of the app's pushes", QXAgent::runStatus);
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : kWrongUsage;
  }
  return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
  Invocation invocation;
  if (const auto exitCode = parse(argc, argv, invocation)) return *exitCode;
  try {
    return invocation.command();
  } catch (const std::exception& error) {
    std::cerr << "qx-agent: " << error.what() << '\n';
    return 1;
  }
}
