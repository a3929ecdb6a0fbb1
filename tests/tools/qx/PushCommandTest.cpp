// `qx push` as a program: arguments, standard streams, exit codes.

#include "QXPlatform/foundation/JSON.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Program.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"

namespace {

using QXPlatform::Dictionary;
using support::ProgramResult;
using support::runProgram;

ProgramResult push(std::vector<std::string> arguments, const std::string& input = {}) {
  arguments.insert(arguments.begin(), "push");
  return runProgram("qx", arguments, input);
}

std::string outcome(const Dictionary& line) {
  return std::string(line.find("outcome")->string().value_or(""));
}

TEST(PushCommandTest, APushOverTheAirComesOutWithItsAlertAndPayload) {
  const std::string input =
      R"({"aps":{"alert":{"body":"B","subtitle":"S","title":"T"},"badge":3,"sound":"s.caf"},"k":1.5})";
  const auto result = push({"-"}, input);
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  ASSERT_EQ(result.lines().size(), 1U);
  const Dictionary line = result.lines()[0];
  EXPECT_EQ(outcome(line), "delivered");
  EXPECT_EQ(line.find("identifier")->string()->size(), 36U);
  EXPECT_GT(*line.find("elapsedMs")->number(), 0);
  EXPECT_EQ(
      line.find("content")->description(),
      R"({"attachments":[],"badge":3,"body":"B","sound":"s.caf","subtitle":"S","title":"T","userInfo":)" +
          input + "}");
}

TEST(PushCommandTest, ABadgeIsAWholeNumberHoweverItIsWritten) {
  const auto lines =
      push({"-"},
           "{\"aps\":{\"badge\":3.0}}\n{\"content\":{\"badge\":3e0}}\n{\"aps\":{\"badge\":3.5}}\n"
           "{\"content\":{\"badge\":3.5}}\n")
          .lines();
  ASSERT_EQ(lines.size(), 4U);
  for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(lines[i].find("content")->find("badge")->integer(), 3);
  EXPECT_EQ(lines[2].find("content")->find("badge"), nullptr);
  EXPECT_EQ(lines[3].find("error")->string(), "/content/badge: expected an integer, found a fraction");
}

TEST(PushCommandTest, WhatIsNoPushIsAnsweredInItsPlaceAndTheRestGoOn) {
  const std::string input =
      "{\"identifier\":\"first\",\"content\":{}}\n"
      "\n"
      "garbage\n"
      "[]\n"
      "{\"neither\":1}\n"
      "{\"content\":{\"title\":5}}\n"
      "\xff\xfe\n" +
      std::string(5'000'000, '{') +
      "\n"
      "{\"identifier\":\"last\",\"content\":{\"userInfo\":{\"_sid\":\"VTQX\",\"_rf\":[[7]],\"$_rf\":{}}}}";
  const auto result = push({"-", "--jobs", "4"}, input);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  const auto lines = result.lines();
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_EQ(lines[0].find("identifier")->string(), "first");
  for (std::size_t i = 1; i <= 6; ++i) {
    EXPECT_EQ(lines[i].find("line")->integer(), static_cast<std::int64_t>(i) + 2);
    EXPECT_FALSE(lines[i].find("error")->string()->empty());
  }
  EXPECT_NE(lines[4].find("error")->string()->find("/content/title"), std::string::npos);
  EXPECT_EQ(lines[7].find("identifier")->string(), "last");
  EXPECT_EQ(outcome(lines[7]), "delivered");
}

TEST(PushCommandTest, TheHostsHookDoesAsTold) {
  const std::string input = R"({"identifier":"i","content":{"userInfo":{"a":1}}})";
  const auto changed = push({"-", "--hook-changes", R"({"a":2,"b":[true]})"}, input);
  EXPECT_EQ(changed.lines().at(0).find("content")->find("userInfo")->description(), R"({"a":2,"b":[true]})");

  const auto raised =
      push({"-", "--hook-raise", "out of range", "--log-level", "error", "--log-format", "json"}, input);
  EXPECT_EQ(raised.exitCode, 0);
  const auto logged = QXPlatform::parseJSON(raised.errors)->dictionary().value();
  EXPECT_EQ(logged.find("message")->string(),
            "VTQXNotificationService exception in client code=out of range");
  EXPECT_EQ(logged.find("push")->string(), "i");

  const auto start = std::chrono::steady_clock::now();
  const auto hung = push({"-", "--hook-hang", "--time-limit", "0.3"}, input);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10))
      << "never waits for a hook that hangs";
  EXPECT_EQ(hung.exitCode, 0);
  const Dictionary line = hung.lines().at(0);
  EXPECT_EQ(outcome(line), "expired");
  EXPECT_GE(*line.find("elapsedMs")->number(), 270);
  EXPECT_EQ(line.find("content")->find("userInfo")->description(), R"({"a":1})");
}

TEST(PushCommandTest, FilesAreOnePushEachUnlessTheyHoldLines) {
  const support::TemporaryDirectory directory;
  const std::string one = directory.write("one.json", "{\n  \"aps\": {\"alert\": \"one\"}\n}\n");
  const std::string two = directory.write("two.ndjson", "{\"aps\":{}}\n{\"aps\":{}}\n");
  const auto result = push({one, two, directory.path("missing.json"), directory.path(), "/proc/self/mem"});
  EXPECT_EQ(result.exitCode, 1);
  const auto lines = result.lines();
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_EQ(lines[0].find("content")->find("body")->string(), "one");
  EXPECT_EQ(lines[3].find("file")->string(), directory.path("missing.json"));
  EXPECT_EQ(lines[4].find("error")->string(), directory.path() + ": Is a directory");
  EXPECT_EQ(lines[5].find("error")->string(), "/proc/self/mem: cannot be read");
}

TEST(PushCommandTest, AHostsOwnProgramIsDriven) {
  const auto result =
      push({"-", "--extension", support::programPath("example-service-extension"), "--jobs", "3"},
           "{\"aps\":{\"alert\":{\"title\":\"Hello\"}}}\nnonsense\n{\"aps\":{}}\n");
  EXPECT_EQ(result.exitCode, 1) << result.errors;
  const auto lines = result.lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_NE(lines[0].find("content")->find("userInfo")->find("greeting"), nullptr);
  EXPECT_EQ(lines[1].find("line")->integer(), 2);
  EXPECT_EQ(runProgram("example-service-extension", {"--jobs", "17"}).exitCode, 2);
}

std::string shellProgram(const support::TemporaryDirectory& directory, const char* name,
                         const std::string& script) {
  std::string path = directory.write(name, "#!/bin/sh\n" + script);
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path;
}

TEST(PushCommandTest, AProgramTakesWhatTheBuiltInExtensionTakes) {
  const std::string alert(2'300'000, 'x');
  const std::string input = R"({"aps":{"alert":")" + alert + "\"}}\n" + R"({"aps":{},"deep":)" +
                            std::string(511, '[') + std::string(511, ']') + "}\n";
  for (const bool builtIn : {true, false}) {
    std::vector<std::string> arguments{"-", "--time-limit", "5"};
    if (!builtIn)
      arguments.insert(arguments.end(), {"--extension", support::programPath("example-service-extension")});
    const auto result = push(arguments, input);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 2);
    EXPECT_EQ(result.output.find("\"error\""), std::string::npos);
    EXPECT_NE(result.output.find(alert), std::string::npos);
  }
}

TEST(PushCommandTest, WhatAProgramRefusesIsAnsweredInItsPlaceAndTheRestGoOn) {
  const support::TemporaryDirectory directory;
  const std::string program =
      shellProgram(directory, "refuses",
                   "read -r x; echo '{\"identifier\":\"a\",\"outcome\":\"delivered\",\"content\":{}}'\n"
                   "read -r x; echo '{\"line\":2,\"error\":\"too odd\"}'\n"
                   "read -r x; echo '{\"identifier\":\"c\",\"outcome\":\"delivered\",\"content\":{}}'\n"
                   "exit 1");
  const auto result = push({"-", "--extension", program},
                           "\n{\"identifier\":\"a\",\"content\":{}}\n{\"identifier\":\"b\",\"content\":{}}\n"
                           "{\"identifier\":\"c\",\"content\":{}}\n");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "qx push: 1 push was refused; the answers say which and why\n");
  const auto lines = result.lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[1].find("error")->string(), "too odd");
  EXPECT_EQ(lines[1].find("line")->integer(), 3);
  EXPECT_EQ(lines[2].find("identifier")->string(), "c");
}

TEST(PushCommandTest, AProgramThatDiesCostsOneAnswerAndIsStartedAgain) {
  const support::TemporaryDirectory directory;
  const std::string program =
      shellProgram(directory, "dies-of-bad-ones",
                   "while read -r line; do case $line in *bad*) kill -ABRT $$;; esac\n"
                   "echo '{\"identifier\":\"same\",\"outcome\":\"delivered\",\"content\":{}}'; done");
  const auto pushOf = [](const std::string& title) {
    return R"({"identifier":"same","content":{"title":")" + title + "\"}}\n";
  };
  const std::string report = directory.path("report.xml");
  const std::string death = "qx push: the extension ended with signal 6";
  const struct {
    std::vector<std::string> titles;
    std::string said;
  } table[] = {{{"one", "bad", "two"}, death + "; the next push starts it again\n"},
               {{"one", "two", "bad"}, death + "\n"}};
  for (const auto& [titles, said] : table) {
    std::string input;
    for (const auto& title : titles) input += pushOf(title);
    const auto result = push({"-", "--extension", program, "--junit", report}, input);
    EXPECT_EQ(result.exitCode, 1);
    const auto lines = result.lines();
    ASSERT_EQ(lines.size(), titles.size());
    for (std::size_t i = 0; i < lines.size(); ++i)
      EXPECT_EQ(lines[i].contains("error"), titles[i] == "bad") << i;
    EXPECT_TRUE(result.errors.starts_with(said)) << result.errors;
    EXPECT_TRUE(result.errors.ends_with("qx push: 1 push was refused; the answers say which and why\n"));
    EXPECT_TRUE(std::filesystem::remove(report));
  }
}

TEST(PushCommandTest, AProgramThatEndsInGoodOrderBeforeItAnswersIsSaidToHaveEnded) {
  const support::TemporaryDirectory directory;
  const auto result = push({"-", "--extension", shellProgram(directory, "quits", "read -r line; exit 0")},
                           R"({"identifier":"a","content":{}})");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(result.errors.starts_with("qx push: the extension ended with exit code 0\n")) << result.errors;
}

// What a push of this system's with a thumbnail looks like, one a line.
std::string pushesWithThumbnail(const backend::LoopbackServer& server, int count) {
  std::string input;
  for (int i = 0; i < count; ++i) {
    input += R"({"identifier":"i)" + std::to_string(i) +
             R"(","content":{"userInfo":{"_sid":"VTQX","_rf":{"vt":{"it":[{"md":{"ul":")" +
             server.url("/files/night.png") + "\"}}]}}}}}\n";
  }
  return input;
}

TEST(PushCommandTest, AttachmentsLieInOneDirectoryWhereTheyAreToldTo) {
  const backend::LoopbackServer server;
  const std::string program = support::programPath("example-service-extension");
  for (const std::vector<std::string>& extension : {{}, std::vector<std::string>{"--extension", program}}) {
    for (const std::string option : {"", "none", "named"}) {
      const support::TemporaryDirectory temporary;
      const support::TemporaryDirectory elsewhere;
      const support::ScopedEnvironment environment("TMPDIR", temporary.path());
      std::vector<std::string> arguments{"-", "--jobs", "3"};
      arguments.insert(arguments.end(), extension.begin(), extension.end());
      if (!option.empty()) {
        const std::string where = option == "none" ? option : elsewhere.path(option);
        arguments.insert(arguments.end(), {"--attachments", where});
      }
      const auto result = push(arguments, pushesWithThumbnail(server, 6));
      EXPECT_EQ(result.exitCode, 0) << result.errors;
      std::set<std::filesystem::path> files;
      std::set<std::filesystem::path> directories;
      for (const Dictionary& line : result.lines()) {
        const auto& attachments = line.find("content")->find("attachments")->elements();
        ASSERT_EQ(attachments.size(), 1U);
        const std::string url(*attachments[0].find("url")->string());
        const std::filesystem::path file = url.substr(std::string("file://").size());
        EXPECT_EQ(std::filesystem::exists(file), option != "none");
        files.insert(file);
        directories.insert(file.parent_path());
      }
      EXPECT_EQ(files.size(), 6U);
      EXPECT_EQ(directories.size(), 1U);
      const std::filesystem::directory_iterator left(temporary.path());
      EXPECT_EQ(std::distance(begin(left), end(left)), option.empty() ? 1 : 0) << option;
      EXPECT_EQ(directories.contains(elsewhere.path("named")), option == "named");
    }
  }
  const auto without = push({"-", "--no-thumbnail"}, pushesWithThumbnail(server, 1)).lines();
  EXPECT_TRUE(without.at(0)["content"]["attachments"].elements().empty());
}

TEST(PushCommandTest, WhatKilledRunsHaveLeftGoesAndWhatOthersKeptStays) {
  const support::TemporaryDirectory temporary;
  const support::ScopedEnvironment environment("TMPDIR", temporary.path());
  for (const char* left : {"qx-push-kept-1", "qx-push-kept-2/picture", "qx-push-dropped-1/picture"})
    std::filesystem::create_directories(temporary.path(left));
  push({"-"}, "");
  push({"-", "--attachments", "none"}, "");
  const std::filesystem::directory_iterator left(temporary.path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 1);
  EXPECT_TRUE(std::filesystem::exists(temporary.path("qx-push-kept-2/picture")));
}

TEST(PushCommandTest, TheLogOfAProgramTakesTheFormatAskedFor) {
  const std::string input =
      R"({"identifier":"i0","content":{"userInfo":{"_sid":"VTQX","_rf":{"vt":{"it":[{"md":{"ul":"ftp://a/b.png"}}]}}}}})";
  const auto result = push({"-", "--extension", support::programPath("example-service-extension"),
                            "--log-level", "debug", "--log-format", "json"},
                           input);
  std::istringstream errors(result.errors);
  bool thumbnailFailed = false;
  for (std::string text; std::getline(errors, text);) {
    const auto line = QXPlatform::parseJSON(text)->dictionary().value();
    EXPECT_NE(line.find("type")->string(), "debug") << "the program's own level is error";
    EXPECT_EQ(line.find("push")->string(), "i0") << text;
    thumbnailFailed |= line.find("message")->string()->starts_with("Thumbnail not attached: ");
  }
  EXPECT_TRUE(thumbnailFailed) << result.errors;
}

std::string carouselPush(const std::string& url) {
  return R"({"aps":{"alert":{"title":"T","body":"B"}},"_sid":"VTQX","_rf":)" +
         support::carousel(support::plainPanels(1, url)) + "}\n";
}

TEST(PushCommandTest, StableResultsAreTheSameInEveryRun) {
  const backend::LoopbackServer server;
  const support::TemporaryDirectory kept;
  std::string input;
  for (int i = 0; i < 4; ++i) input += carouselPush(server.url("/files/sunrise.png"));
  const std::string program = support::programPath("example-service-extension");
  for (const std::vector<std::string>& extension : {{}, std::vector<std::string>{"--extension", program}}) {
    std::vector<std::string> arguments{"-", "--stable", "--jobs", "4"};
    arguments.insert(arguments.end(), extension.begin(), extension.end());
    const auto first = push(arguments, input);
    arguments.insert(arguments.end(), {"--attachments", kept.path("a")});
    EXPECT_EQ(push(arguments, input).output, first.output);
    ASSERT_EQ(first.lines().size(), 4U) << first.errors;
    const Dictionary third = first.lines()[2];
    EXPECT_EQ(third["identifier"].string(), "00000000-0000-0000-0000-000000000003");
    EXPECT_EQ(third["elapsedMs"].integer(), 0);
    EXPECT_EQ(third["content"]["attachments"].elements()[0]["url"].string(),
              "file:///stable/00000000-0000-0000-0000-000000000003/sunrise.png");
  }
}

TEST(PushCommandTest, APushIsCalledAsTheUserSays) {
  const auto names = [](const std::string& input) {
    std::string joined;
    for (const auto& line : push({"-", "--identifier", "spring"}, input).lines()) {
      joined += std::string(line["identifier"].string().value_or("error")) + " ";
    }
    return joined;
  };
  EXPECT_EQ(names("{\"aps\":{}}"), "spring ");
  EXPECT_EQ(names("{\"aps\":{}}\nnone\n{\"identifier\":\"own\",\"content\":{}}\n"),
            "spring-1 error spring-3 ");
}

TEST(PushCommandTest, FailsOnWhatItIsToldTo) {
  const backend::LoopbackServer server;
  const support::TemporaryDirectory directory;
  const std::string missing = carouselPush(server.url("/files/none.png"));
  const std::string program = support::programPath("example-service-extension");
  const std::string report = directory.path("report.xml");
  using Words = std::vector<std::string>;
  const struct {
    Words arguments;
    std::string input;
    const char* said;  // empty: nothing failed
  } table[] = {
      {{"--fail-on", "expired", "--hook-hang", "--time-limit", "0.2"}, "{\"aps\":{}}", "expired"},
      {{"--fail-on", "expired"}, missing, ""},
      {{"--fail-on", "expired,no-attachment"}, missing, "no attachment"},
      {{"--fail-on", "no-attachment"}, carouselPush(server.url("/files/night.png")), ""},
      {{"--fail-on", "log-error"}, missing, "logged: Missing required messageId"},
      {{"--fail-on", "log-error", "--extension", program}, missing, "logged: Missing required messageId"},
      // The module's category says what a host did, not what went wrong.
      {{"--fail-on", "log-error"}, "{\"aps\":{},\"_sid\":\"OTHER\"}", ""},
  };
  for (const auto& row : table) {
    Words arguments{"-", "--attachments", "none", "--junit", report};
    arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
    const auto result = push(arguments, row.input);
    const bool fails = *row.said != '\0';
    EXPECT_EQ(result.exitCode, fails ? 1 : 0) << row.said << result.errors;
    EXPECT_NE(
        result.errors.find(fails ? "1 push failed, first standard input:1: " + std::string(row.said) : ""),
        std::string::npos)
        << result.errors;
    std::ifstream file(report);
    const std::string xml{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(xml.find(fails ? "failures=\"1\"" : "failures=\"0\""), std::string::npos) << xml;
    EXPECT_EQ(xml.find("<failure message=\"" + std::string(row.said)) != std::string::npos, fails) << xml;
  }
}

TEST(PushCommandTest, OnATerminalAPushReadsAsADeviceShowsIt) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write(
      "push.json", R"({"identifier":"i","content":{"title":"New \u001b[2Jin","body":"Three","badge":2}})");
  const auto onTerminal = [&](const std::string& more) {
    const std::string command = support::programPath("qx") + " push --stable " + more + file;
    return runProgram("/usr/bin/script", {"-qec", command, "/dev/null"}).output;
  };
  EXPECT_EQ(onTerminal(""),
            "\033[1mNew  [2Jin\033[0m\r\n  Three\r\n  badge     2\r\n"
            "\033[2m  delivered after 0 ms, i\033[0m\r\n");
  EXPECT_TRUE(onTerminal("--json ").starts_with("{\"content\":"));
  EXPECT_TRUE(
      onTerminal("/no/file ").starts_with("\033[31m✗ /no/file: No such file or directory\033[0m\r\n"));
}

// Beside the answers there are two connections, two trees and the push itself.
TEST(PushCommandTest, WhateverABackEndAnswersAPushTakesLittleMemory) {
#ifdef QX_SANITIZED
  GTEST_SKIP() << "A sanitizer's own memory is the most of it";
#endif
  constexpr long kMostKilobytes = 22 * 1024;  // the agent ends an extension that holds 24 MB
  std::string widest = "[[]";
  while (widest.size() < 1'000'000) widest += ",[]";
  for (const std::string& body : {widest + "]", std::string(std::size_t{8} << 20, '[')}) {
    const backend::LoopbackServer server({.body = body, .headers = {{"X-Large", std::string(60'000, 'x')}}});
    const support::TemporaryDirectory groups;
    const auto qx = [&](std::vector<std::string> arguments, const std::string& input = {}) {
      arguments.insert(arguments.begin(), {"--groups-root", groups.path()});
      // By a program of its own: a child's peak begins with what its parent has in memory.
      arguments.insert(arguments.begin(), {"-f", "%M", support::programPath("qx")});
      auto result = runProgram("/usr/bin/time", arguments, input);
      EXPECT_EQ(result.exitCode, 0) << result.errors;
      return result;
    };
    qx({"host", "init"});
    qx({"host", "set-device", "--base-url", server.url(), "--application-id", "A", "--device-id", "D",
        "--access-token", "TOK", "--sdk-version", "1", "--subscriber-token", "S", "--tenant-id", "T",
        "--session-id", "S"});
    qx({"host", "receipts", "on"});
    for (const char* module : {"quorixEngagement", "mobileAppMessaging"})
      qx({"host", "map-app", module, "A"});
    const auto context = qx({"context", "encode", "--source", "1", "--destinations", "3"}).lines();
    ASSERT_EQ(context.size(), 1U);
    const std::string co(context[0].find("context")->string().value_or(""));
    const auto pushed =
        qx({"push"}, R"({"aps":{},"_sid":"VTQX","_co":")" + co +
                         R"(","_m":"m1","_mt":"t","_r":"r","_pb":"b","_rf":)" +
                         support::carousel(support::plainPanels(1, server.url("/large.png"))) + "}");
    EXPECT_EQ(server.requests().size(), 3U) << "two receipts and the thumbnail";
    EXPECT_LT(std::stol(pushed.errors), kMostKilobytes);
  }
}

TEST(PushCommandTest, ResultsKeepTheOrderOfTheInputEvenWithOneIdentifier) {
  std::string input;
  for (int i = 0; i < 500; ++i)
    input += R"({"identifier":"same","content":{"title":"n)" + std::to_string(i) + "\"}}\n";
  const std::vector<std::string> builtIn{"-", "--jobs", "8"};
  const std::vector<std::string> program{"-", "--jobs", "8", "--extension",
                                         support::programPath("example-service-extension")};
  for (const auto& arguments : {builtIn, program}) {
    const auto lines = push(arguments, input).lines();
    ASSERT_EQ(lines.size(), 500U);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(lines[i].find("content")->find("title")->string(), "n" + std::to_string(i));
    }
  }
}

TEST(PushCommandTest, AProgramThatMisbehavesIsAnErrorAndNeverAHang) {
  const support::TemporaryDirectory directory;
  const auto program = [&](const char* name, const std::string& script) {
    return shellProgram(directory, name, script);
  };
  const std::string answer = R"({"identifier":"b","outcome":"delivered","content":{}})";
  const std::string dies = program("dies", "exit 0");
  const std::string crashes = program("crashes", "read x; echo '" + answer + "'; kill -ABRT $$");
  const std::string ignores = program("ignores", "exec sleep 60");
  const std::string floods = program("floods", "exec cat /dev/zero");
  const std::string chatters =
      program("chatters", "echo starting up; while read x; do echo '" + answer + "'; done");
  const struct {
    std::string program;
    std::size_t errors;
    const char* said;  // on standard error
  } table[] = {{dies, 1, "refused"},
               {crashes, 0, "signal 6"},
               {ignores, 1, "not answered within its time"},
               {floods, 1, "64 MiB without a line break"},
               {chatters, 0, "extension: starting up"}};
  for (const auto& row : table) {
    const auto result =
        push({"-", "--extension", row.program, "--time-limit", "0.2"},
             R"({"identifier":"b","content":{"body":")" + std::string(100'000, 'x') + R"("}})");
    EXPECT_EQ(result.exitCode, row.program == chatters ? 0 : 1) << row.program;
    EXPECT_NE(result.errors.find(row.said), std::string::npos) << row.program << ": " << result.errors;
    ASSERT_EQ(result.lines().size(), 1U) << row.program;
    EXPECT_EQ(result.lines()[0].contains("error"), row.errors == 1) << row.program;
  }
}

TEST(PushCommandTest, MoreHangingHooksThanThreadsHoldUpNeitherTheOthersNorTheEnd) {
  std::string input;
  for (int i = 0; i < 100; ++i) input += "{\"aps\":{},\"_sid\":\"VTQX\",\"$_rf\":\"\"}\n";
  const auto start = std::chrono::steady_clock::now();
  const auto result = push({"-", "--jobs", "16", "--hook-hang", "--time-limit", "0.1"}, input);
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  EXPECT_EQ(result.lines().size(), 100U);
}

TEST(PushCommandTest, ABatchThatTakesLongShowsABarOnATerminal) {
  const support::TemporaryDirectory directory;
  const std::string pushes = directory.write(
      "five.ndjson", "{\"aps\":{}}\n{\"aps\":{}}\n{\"aps\":{}}\n{\"aps\":{}}\n{\"aps\":{}}\n");
  const std::string command = support::programPath("qx") + " push --hook-hang --time-limit 0.4 " + pushes;
  const auto known = runProgram("/usr/bin/script", {"-qec", command, "/dev/null"});
  EXPECT_NE(known.output.find("[###################.....] 80 %, 4 pushes"), std::string::npos)
      << known.output;
  EXPECT_TRUE(known.output.ends_with("\r\033[K")) << known.output;
  const auto unknown =
      runProgram("/usr/bin/script", {"-qec", "cat " + pushes + " | " + command + " -", "/dev/null"});
  EXPECT_NE(unknown.output.find("###"), std::string::npos) << unknown.output;
  EXPECT_EQ(unknown.output.find('%'), std::string::npos) << unknown.output;
}

}  // namespace
