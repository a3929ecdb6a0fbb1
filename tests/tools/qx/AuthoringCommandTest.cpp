// `qx check`, `qx pack` and `qx unpack` as programs: streams, files, exit codes.

#include "QXPlatform/foundation/JSON.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Program.h"
#include "tests/support/Test.h"

namespace {

using QXPlatform::Dictionary;
using support::runProgram;
using testing::HasSubstr;

const std::string kPush =
    R"({"aps":{"alert":"é","mutable-content":1,"category":"c"},"_sid":"VTQX","_m":"m","_mt":"t","_rf":)" +
    support::carousel(R"([{"id":"p","md":{"ul":"https://e.com/p.png"},"ti":{"tx":"T"},"ac":[{"t":"0"}]}])",
                      R"("x":[1.5,-0.0,1e300,9223372036854775807,"\u0000é",null],)") +
    "}";

const std::string kGoodLine = R"({"aps":{"mutable-content":1},"_sid":"VTQX","_m":"m","_mt":""})";

TEST(AuthoringCommandTest, CheckPrintsItsFindingsAndEndsByTheirSeverity) {
  const auto warned = runProgram("qx", {"check", "-"}, kPush);
  EXPECT_EQ(warned.exitCode, 0);
  EXPECT_EQ(warned.errors, "");
  EXPECT_EQ(warned.lines(),
            (std::vector{Dictionary{{"severity", "warning"},
                                    {"at", "/_rf/vt/x"},
                                    {"message", "ignored: no key that is read here"},
                                    {"file", "-"},
                                    {"line", 1},
                                    {"column", static_cast<std::int64_t>(kPush.find("[1.5"))}}}));
  EXPECT_EQ(runProgram("qx", {"check", "--strict", "-"}, kPush).exitCode, 1);

  const auto broken = runProgram("qx", {"check", "-"}, "\n" + kGoodLine + "\nnonsense\n" + kPush);
  EXPECT_EQ(broken.exitCode, 1);
  EXPECT_EQ(broken.errors, "qx check: standard input: line 3: 1 error, first at line 3, column 1\n");
  ASSERT_EQ(broken.lines().size(), 2U);
  EXPECT_EQ(broken.lines()[0]["at"].string(), "");
  EXPECT_EQ(broken.lines()[0]["line"].integer(), 3);
  EXPECT_EQ(broken.lines()[1]["line"].integer(), 4);
}

TEST(AuthoringCommandTest, CheckTakesFilesAndDirectories) {
  const support::TemporaryDirectory directory;
  std::filesystem::create_directory(directory.path("b"));
  directory.write("b/lines.ndjson", kPush + "\n" + kGoodLine + "\n" + kPush + "\n");
  directory.write("a.json", "{\n  \"aps\": {},\n}");
  directory.write("c.txt", "no push");
  std::filesystem::create_symlink("loop.json", directory.path("loop.json"));
  const auto result = runProgram("qx", {"check", directory.path(), directory.path("none.json")});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "qx check: " + directory.path("a.json") + ": 1 error, first at line 2, column 12\n" +
                "qx check: " + directory.path("loop.json") + ": Too many levels of symbolic links\n" +
                "qx check: " + directory.path("none.json") + ": No such file or directory\n");
  std::vector<std::string> places;
  for (const Dictionary& line : result.lines()) {
    places.push_back(std::filesystem::path(*line["file"].string()).filename().string() + ":" +
                     line["line"].description() + " " + std::string(*line["at"].string()));
  }
  EXPECT_EQ(places, (std::vector<std::string>{"a.json:2 ", "lines.ndjson:1 /_rf/vt/x",
                                              "lines.ndjson:3 /_rf/vt/x", "loop.json:1 ", "none.json:1 "}));
  EXPECT_EQ(result.lines().back()["message"].string(), "No such file or directory");
  EXPECT_EQ(runProgram("qx", {"check", "--jobs", "4", directory.path(), directory.path("none.json")}).output,
            result.output);
}

TEST(AuthoringCommandTest, ThreadsKeepTheOrderOfBatches) {
  std::string input;
  for (std::size_t i = 0; i < 1000; ++i) {
    input += i % 7 == 0 ? "nonsense\n" : R"({"aps":{},"_rf":{"vt":")" + std::string(i % 500, 'x') + "\"}}\n";
  }
  const auto one = runProgram("qx", {"pack", "-"}, input);
  const auto several = runProgram("qx", {"pack", "--jobs", "4", "-"}, input);
  EXPECT_EQ(several.exitCode, 1);
  EXPECT_EQ(one.lines().size(), 857U);
  EXPECT_EQ(several.output, one.output);
  EXPECT_EQ(several.errors, one.errors);
}

TEST(AuthoringCommandTest, CheckWritesForPeopleAndForPrograms) {
  const std::string push = "{\"aps\": {\"mutable-content\": 1},\n \"日\":1,\"_sid\": \"VT\"}";
  const auto check = [&](const std::string& format) {
    return runProgram("qx", {"check", "--format", format, "-"}, push).output;
  };
  EXPECT_THAT(check("text"), testing::StartsWith("-:2:16: error: /_sid: not VTQX: "));
  EXPECT_THAT(check("text"),
              HasSubstr("\n  2 |  \"日\":1,\"_sid\": \"VT\"}\n    |                 ^\n    = hint: write "));
  const std::string forged = R"({"content":{"userInfo":{"\n::error::\u001b":1,"\n::error::\u001b":2}}})";
  for (const char* format : {"text", "github"}) {
    const auto shown = runProgram("qx", {"check", "--format", format, "-"}, forged).output;
    EXPECT_THAT(shown, testing::Not(testing::AnyOf(HasSubstr("\n::error::"), HasSubstr("\033"))));
  }
  EXPECT_THAT(check("github"), testing::StartsWith("::error file=-,line=2,col=16,title=/_sid::not VTQX: "));
  const auto sarif = QXPlatform::parseJSON(check("sarif"));
  ASSERT_TRUE(sarif);
  EXPECT_EQ((*sarif)["version"].string(), "2.1.0");
  const auto results = (*sarif)["runs"].elements()[0]["results"].elements();
  ASSERT_EQ(results.size(), 3U);
  EXPECT_EQ(results[0]["level"].string(), "error");
  EXPECT_EQ(results[0]["locations"].elements()[0]["physicalLocation"]["region"]["startLine"].integer(), 2);
}

// What a parser drops, and what stands around the userInfo.
TEST(AuthoringCommandTest, CheckSeesWhatIsWrittenTwiceOrReadByNobody) {
  const std::string push = R"({"identifer":"i","content":{"title":1,"title":"a",)"
                           R"("userInfo":{"_sid":"VTQX","_mt":["t"],"_mt":"u","_m":"m","_mt":"t"}}})";
  const auto lines = runProgram("qx", {"check", "-"}, push).lines();
  std::vector<std::string> found;
  for (const Dictionary& line : lines) {
    found.push_back(std::string(*line["at"].string()) + "; " + std::string(*line["message"].string()) + "; " +
                    push.substr(static_cast<std::size_t>(*line["column"].integer()) - 1, 3));
  }
  const std::string ignored = "ignored: the key comes again, and the last one counts; ";
  EXPECT_THAT(found, testing::ElementsAre(R"(; /identifer: ignored: no key that is read here; "i")",
                                          "; /content/title: " + ignored + "1,\"",
                                          "/_mt; " + ignored + "[\"t", "/_mt; " + ignored + "\"u\""));
  EXPECT_EQ(lines.at(0)["hint"].string(), "did you mean identifier?");
  std::string many;
  for (int i = 0; i < 600; ++i) many += R"("_m":"m",)";
  const auto most = runProgram("qx", {"check", "-"}, "{" + many + kGoodLine.substr(1)).lines();
  ASSERT_EQ(most.size(), 501U);
  EXPECT_EQ(most.back()["message"].string(), "and 100 more findings");
}

// Standard input is one push as well when it is one object over several lines.
TEST(AuthoringCommandTest, StandardInputMayHoldOnePrettyPrintedPush) {
  const auto pretty =
      runProgram("qx", {"unpack", "--pretty", "-"}, runProgram("qx", {"pack", "-"}, kPush).output);
  EXPECT_EQ(runProgram("qx", {"check", "-"}, "\n" + pretty.output).lines().size(), 1U);
  EXPECT_EQ(runProgram("qx", {"push", "-"}, pretty.output).lines().size(), 1U);
  const std::string withLines = "{\n\"x\": [\n{\"y\": 1}\n],\n" + kGoodLine.substr(1);
  EXPECT_EQ(runProgram("qx", {"check", "-"}, withLines).output, "");
  EXPECT_EQ(runProgram("qx", {"check", "-"}, "\xEF\xBB\xBF{\n\"aps\":\n1}").lines().size(), 1U);
  const auto broken = runProgram("qx", {"push", "-"}, "{\"aps\":\n" + kGoodLine + "\n");
  ASSERT_EQ(broken.lines().size(), 2U);
  EXPECT_TRUE(broken.lines()[0].contains("error"));
}

TEST(AuthoringCommandTest, CheckHeedsTheHostsBundle) {
  const support::TemporaryDirectory bundle;
  bundle.write("Info.plist", R"(<plist version="1.0"><dict><key>NSAppTransportSecurity</key><dict>)"
                             R"(<key>NSAllowsArbitraryLoads</key><true/></dict></dict></plist>)");
  std::string push = kPush;
  push.replace(push.find("https"), 5, "http");
  EXPECT_EQ(runProgram("qx", {"check", "-"}, push).lines().size(), 2U);
  EXPECT_EQ(runProgram("qx", {"check", "-", "--bundle", bundle.path()}, push).lines().size(), 1U);
}

TEST(AuthoringCommandTest, UnpackUndoesPackAndADeviceDoesSoToo) {
  const std::string full = R"({"identifier":"i","content":{"badge":3,"userInfo":)" + kPush + "}}";
  for (const std::string& push : {kPush, full}) {
    const auto packed = runProgram("qx", {"pack", "-"}, push);
    EXPECT_EQ(packed.exitCode, 0) << packed.errors;
    EXPECT_THAT(packed.errors,
                testing::MatchesRegex("qx pack: standard input: [0-9]+ bytes before, [0-9]+ after.*\n"));
    EXPECT_THAT(packed.output, testing::Not(HasSubstr("\"_rf\"")));
    const auto unpacked = runProgram("qx", {"unpack", "-", "--pretty"}, packed.output);
    EXPECT_EQ(*QXPlatform::parseJSON(unpacked.output), *QXPlatform::parseJSON(push)) << unpacked.errors;

    const auto shown = runProgram("qx", {"push", "--no-thumbnail"}, packed.output).lines();
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(*shown[0].find("content")->find("userInfo")->find("_rf"),
              *support::dictionary(kPush).find("_rf"));
  }
}

TEST(AuthoringCommandTest, SaysWhatCannotBePackedOrUnpacked) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("push.json", "{\n  \"aps\": {},\n  \"é\": tru\n}\n");
  const std::string missing = directory.path("missing.json");
  const std::string large = R"({"aps":{},"_rf":{"x":")" + std::string(65'530, 'x') + "\"}}";
  const std::string input = "standard input: ";
  const struct {
    std::string command;
    std::string file;
    std::string push;
    std::string reason;
  } table[] = {
      {"pack", file, "", file + ": syntax error at line 3, column 8"},
      {"unpack", missing, "", missing + ": No such file or directory"},
      {"pack", "-", "", input + "no push"},
      {"unpack", "-", R"({"_rf":{}})", input + "neither \"aps\" nor \"content\": not a push"},
      {"pack", "-", R"({"content":{"badge":"1"}})",
       input + "/content/badge: expected an integer, found text"},
      {"pack", "-", R"({"aps":{}})", input + "no _rf to pack"},
      {"pack", "-", R"({"aps":{},"_rf":"{}"})", input + "_rf is not an object"},
      {"pack", "-", R"({"aps":{},"_rf":{},"$_rf":""})", input + "$_rf is there already, beside _rf"},
      {"pack", "-", large, input + "_rf: 65538 bytes of JSON, more than the 65535 that a device inflates"},
      {"unpack", "-", R"({"aps":{}})", input + "no $_rf to unpack"},
      {"unpack", "-", R"({"aps":{},"$_rf":"AAAA"})", input + "$_rf: not raw deflate data, or cut off"},
  };
  for (const auto& row : table) {
    const auto result = runProgram("qx", {row.command, row.file}, row.push);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "qx " + row.command + ": " + row.reason + "\n");
  }
}

}  // namespace
