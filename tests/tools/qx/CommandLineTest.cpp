// What holds for every subcommand of `qx`: its help, wrong usage, results that cannot be written.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Program.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using support::runProgram;
using Arguments = std::vector<std::string>;

TEST(CommandLineTest, EveryHelpHasAnExample) {
  const std::vector<Arguments> subcommands{{"push"},
                                           {"carousel"},
                                           {"check"},
                                           {"pack"},
                                           {"unpack"},
                                           {"host"},
                                           {"host", "init"},
                                           {"host", "set-device"},
                                           {"host", "receipts"},
                                           {"host", "map-app"},
                                           {"host", "show"},
                                           {"host", "pending"},
                                           {"host", "last-click"},
                                           {"backend"},
                                           {"context"},
                                           {"context", "encode"},
                                           {"context", "decode"},
                                           {"demo"}};
  for (Arguments arguments : subcommands) {
    arguments.emplace_back("--help");
    const auto help = runProgram("qx", arguments);
    EXPECT_EQ(help.exitCode, 0) << arguments[0];
    EXPECT_NE(help.output.find("Example"), std::string::npos) << help.output;
  }
}

TEST(CommandLineTest, WrongUsageIsExitCodeTwoAndSaysWhatIsWrong) {
  const struct {
    Arguments arguments;
    const char* said;
  } table[] = {
      {{}, "A subcommand is required"},
      {{"no-such-command"}, "not expected: no-such-command"},
      {{"host"}, "A subcommand is required"},
      {{"host", "no-such-command"}, "not expected: no-such-command"},
      {{"host", "show", "more"}, "not expected: more"},
      {{"host", "receipts", "maybe"}, "maybe is not one of on,off"},
      {{"host", "pending", "other"}, "other is not one of quorixEngagement,mobileAppMessaging"},
      {{"host", "show", "--log-level", "loud"}, "loud is not one of debug,warn,error,fault,none"},
      {{"host", "show", "--bundle", "/nowhere"}, "/nowhere"},
      {{"push", "--no-such-option"}, "not expected: --no-such-option"},
      {{"push", "--jobs", "0"}, "not in range 1 to 16"},
      {{"push", "--jobs", "17"}, "not in range 1 to 16"},
      {{"push", "--jobs", "x"}, "not in range 1 to 16"},
      {{"push", "--extension", "/bin/true", "--log-level", "debug"}, "excludes"},
      {{"--log-format", "json", "push", "--extension", "/bin/true"}, "excludes"},
      {{"push", "--time-limit", "0"}, "--time-limit: must be above 0"},
      {{"push", "--time-limit", "nan"}, "--time-limit: must be above 0"},
      {{"push", "--time-limit", "86401"}, "--time-limit: must be above 0 and at most a day"},
      {{"push", "--hook-changes", "[1]"}, "not a JSON object"},
      {{"push", "--hook-changes", "{"}, "incomplete JSON at column 2"},
      {{"push", "--hook-raise", "x", "--hook-hang"}, "excludes"},
      {{"carousel", "--no-such-option"}, "not expected: --no-such-option"},
      {{"carousel"}, "FILE is required"},
      {{"carousel", "f", "--do", "jump"}, "no such step: 'jump'"},
      {{"carousel", "f", "--do", "wait:-1"}, "wait:-1"},
      {{"carousel", "f", "--panel", "0"}, "requires --png"},
      {{"carousel", "f", "--png", "a.png", "--all", "--panel", "0"}, "excludes"},
      {{"carousel", "f", "--width", "111"}, "--width: "},
      {{"carousel", "f", "--scale", "0.9"}, "--scale: must be from 1 to 8"},
      {{"carousel", "f", "--scale", "nan"}, "--scale: must be from 1 to 8"},
      {{"carousel", "f", "--png", "a.png", "--width", "10000", "--scale", "8"}, "--width times --scale"},
      {{"carousel", "f", "--png", "a.png", "--panel", "-1"}, "--panel: must be a whole number"},
      {{"check"}, "FILE is required"},
      {{"backend", "--port", "65536"}, "not in range 0 to 65535"},
      {{"backend", "--delay", "-1"}, "--delay: must be at least 0"},
      {{"backend", "--hang", "--close"}, "excludes"},
      {{"context", "encode", "--source", "-1", "--destinations", "1"}, "--source: must be a whole number"},
      {{"context", "encode", "--source", "1", "--destinations", "9223372036854775808"}, "--destinations: "},
  };
  for (const auto& row : table) {
    const auto result = runProgram("qx", row.arguments);
    EXPECT_EQ(result.exitCode, 2) << row.said;
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find(row.said), std::string::npos) << row.said << ": " << result.errors;
  }
}

TEST(CommandLineTest, ResultsThatCannotBeWrittenAreAnError) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("push.json", R"({"aps":{}})");
  const std::string script = support::programPath("qx") + " \"$@\" > /dev/full";
  for (const Arguments& command :
       {Arguments{"push", file}, Arguments{"check", file}, Arguments{"host", "show"},
        Arguments{"context", "decode", "x"}, Arguments{"backend"}}) {
    Arguments arguments{"-c", script, "sh"};
    arguments.insert(arguments.end(), command.begin(), command.end());
    const auto full = runProgram("/bin/sh", arguments);
    EXPECT_EQ(full.exitCode, 1) << command[0];
    EXPECT_TRUE(full.errors.ends_with("the results cannot be written\n")) << full.errors;
  }
}

}  // namespace
