// The agent's command line: the only file that knows the argument parser.

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <string>

#include "QXExtensionSDK/runtime/Version.h"
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

void addProgram(CLI::App& command, const std::string& name, std::filesystem::path& path,
                const std::string& description) {
  command.add_option(name, path, description)
      ->type_name("PROGRAM")
      ->check(CLI::Validator(CLI::ExistingFile).description(""));
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App program("qx-agent: brings pushes through an app's extensions onto the desktop", "qx-agent");
  program.set_version_flag("--version",
                           reinterpret_cast<const char*>(QXExtensionSDK::QXExtensionSDKVersionString));
  program.require_subcommand(1);
  std::function<int()> command;

  QXAgent::Installation installation;
  std::filesystem::path contentExtension;
  std::filesystem::path bundle;
  std::string distributor;
  CLI::App& install = *program.add_subcommand("install", "Make the agent known to the desktop for an app");
  install.footer(
      "Example:\n  qx-agent install --app com.example.Shop --service-extension /opt/shop/service-extension");
  addApp(install, installation.app);
  addProgram(install, "--service-extension", installation.serviceExtension, "The app's service extension");
  install.get_option("--service-extension")->required();
  addProgram(install, "--content-extension", contentExtension, "The app's content extension");
  install.add_option("--bundle", bundle, "Directory of the Info.plist that both read")
      ->type_name("DIR")
      ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
  install.add_option("--name", installation.name, "How notifications name the app [its id]")
      ->type_name("NAME");
  install.add_option("--icon", installation.icon, "Icon name or file")->type_name("ICON");
  install.add_option("--distributor", distributor, "The distributor to be used")->type_name("BUS-NAME");
  install.callback([&] {
    command = [&] {
      installation.serviceExtension = std::filesystem::absolute(installation.serviceExtension);
      if (!contentExtension.empty())
        installation.contentExtension = std::filesystem::absolute(contentExtension);
      if (!bundle.empty()) installation.bundle = std::filesystem::absolute(bundle);
      if (!distributor.empty()) installation.distributor = distributor;
      if (installation.name.empty()) installation.name = installation.app;
      return QXAgent::runInstall(installation);
    };
  });

  QXAgent::RunOptions options;
  CLI::App& run = *program.add_subcommand("run", "Deliver an app's pushes; what the bus starts");
  run.footer("Example:\n  mosquitto_sub -t pushes | qx-agent run --app com.example.Shop --source lines");
  addApp(run, options.app);
  run.add_option("--source", options.readsLines,
                 "Where pushes come from: unifiedpush, or lines on standard input")
      ->type_name("SOURCE")
      ->transform(CLI::Transformer(std::map<std::string, bool>{{"unifiedpush", false}, {"lines", true}}));
  std::int64_t idleSeconds = options.idle.count();
  run.add_option("--idle", idleSeconds, "How long it stays with nothing to do")
      ->type_name("SECONDS")
      ->check(CLI::Range(std::int64_t{0}, std::int64_t{86'400}))
      ->capture_default_str();
  run.callback([&] {
    command = [&] {
      options.idle = std::chrono::seconds(idleSeconds);
      return QXAgent::runAgent(options);
    };
  });

  std::string app;
  const auto addQuery = [&](const char* name, const char* description, int (*query)(const std::string&)) {
    CLI::App& subcommand = *program.add_subcommand(name, description);
    subcommand.footer(std::string("Example:\n  qx-agent ") + name + " --app com.example.Shop");
    addApp(subcommand, app);
    subcommand.callback([&command, &app, query] { command = [&app, query] { return query(app); }; });
  };
  addQuery("uninstall", "Undo an installation, and end the registration", QXAgent::runUninstall);
  addQuery("endpoint", "Print where pushes for the app are to be sent, registering it if need be",
           QXAgent::runEndpoint);
  addQuery("status", "Print what became of the app's pushes", QXAgent::runStatus);

  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : kWrongUsage;
  }
  try {
    return command();
  } catch (const std::exception& error) {
    std::cerr << "qx-agent: " << error.what() << '\n';
    return 1;
  }
}
