// What holds for every subcommand of `qx`: its help, wrong usage, results that cannot be written.

#include "tests/support/Program.h"
#include "tests/support/Test.h"

namespace {

using support::runProgram;

std::vector<std::string> words(const std::string& command) {
  std::istringstream stream(command);
  return {std::istream_iterator<std::string>(stream), {}};
}

TEST(CommandLineTest, EveryHelpHasAnExample) {
  for (const char* subcommand :
       {"push", "carousel", "check", "pack", "unpack", "host", "host init", "host set-device",
        "host receipts", "host map-app", "host show", "host pending", "host last-click", "backend", "context",
        "context encode", "context decode", "demo"}) {
    const auto help = runProgram("qx", words(std::string(subcommand) + " --help"));
    EXPECT_EQ(help.exitCode, 0) << subcommand;
    EXPECT_NE(help.output.find("Example"), std::string::npos) << help.output;
    EXPECT_EQ(runProgram("qx", words(std::string("help ") + subcommand)).output, help.output);
  }
}

TEST(CommandLineTest, WrongUsageIsExitCodeTwoAndSaysWhatIsWrong) {
  const std::pair<const char*, const char*> table[] = {
      {"", "A subcommand is required"},
      {"no-such-command", "there is no command no-such-command\n"},
      {"carusel f", "there is no command carusel; did you mean carousel?"},
      {"host shwo --help", "there is no command shwo; did you mean show?"},
      {"--stable push f", "write --stable after push"},
      {"help bakcend", "did you mean backend?"},
      {"push --attachements x", "there is no option --attachements; did you mean --attachments?"},
      {"push --log-levle=debug", "did you mean --log-level?"},
      {"carousel f --gal page.html", "there is no option --gal; did you mean --gallery?"},
      {"push --fail-on expired,lost", "lost is not one of expired,no-attachment,log-error"},
      {"carousel f --fail-on all", "all is not one of failed-image"},
      {"backend --expect 1", "requires --within"},
      {"host show more", "there is no command more"},
      {"host receipts maybe", "maybe is not one of on,off"},
      {"host show --log-level loud", "loud is not one of debug,warn,error,fault,none"},
      {"host show --bundle /nowhere", "/nowhere"},
      {"push --jobs 17", "not in range 1 to 16"},
      {"push --time-limit nan", "--time-limit: must be above 0"},
      {"push --time-limit 86401", "--time-limit: must be above 0 and at most a day"},
      {"push --hook-changes [1]", "not a JSON object"},
      {"push --hook-changes {", "incomplete JSON at column 2"},
      {"push --hook-raise x --hook-hang", "excludes"},
      {"carousel", "FILE is required"},
      {"carousel f --do jump", "no such step: 'jump'"},
      {"carousel f --do wait:-1", "wait:-1"},
      {"carousel f --panel 0", "requires --png"},
      {"carousel f --width 111", "--width: "},
      {"carousel f --scale nan", "--scale: must be from 1 to 8"},
      {"carousel f --png a.png --width 10000 --scale 8", "--width times --scale"},
      {"carousel f --png a.png --panel -1", "--panel: must be a whole number"},
      {"backend --port 65536", "not in range 0 to 65535"},
      {"backend --delay -1", "--delay: must be at least 0"},
      {"context encode --source -1 --destinations 1", "--source: must be a whole number"},
      {"context encode --source 1 --destinations 9223372036854775808", "--destinations: "},
  };
  for (const auto& [command, said] : table) {
    const auto result = runProgram("qx", words(command));
    EXPECT_EQ(result.exitCode, 2) << command;
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find(said), std::string::npos) << command << ": " << result.errors;
  }
}

TEST(CommandLineTest, ResultsThatCannotBeWrittenAreAnError) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("push.json", R"({"aps":{"mutable-content":1},"_sid":"VTQX"})");
  const std::string script = support::programPath("qx") + " $0 > /dev/full";
  for (const std::string& command :
       {"push " + file, "check " + file, std::string("host show"), std::string("context decode x"),
        std::string("backend"), std::string("--help")}) {
    const auto full = runProgram("/bin/sh", {"-c", script, command});
    EXPECT_EQ(full.exitCode, 1) << command;
    EXPECT_TRUE(full.errors.ends_with("the results cannot be written\n")) << full.errors;
  }
}

}  // namespace
