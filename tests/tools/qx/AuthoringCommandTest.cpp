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
    R"({"aps":{"alert":"é"},"_sid":"VTQX","_m":"m","_mt":"t","_rf":)" +
    support::carousel(R"([{"id":"p","md":{"ul":"https://e.com/p.png"},"ti":{"tx":"T"}}])",
                      R"("x":[1.5,-0.0,1e300,9223372036854775807,"\u0000é",null],)") +
    "}";

TEST(AuthoringCommandTest, CheckPrintsItsFindingsAndEndsByTheirSeverity) {
  const auto warned = runProgram("qx", {"check", "-"}, kPush);
  EXPECT_EQ(warned.exitCode, 0);
  EXPECT_EQ(warned.errors, "");
  EXPECT_EQ(warned.lines(), (std::vector{Dictionary{{"severity", "warning"},
                                                    {"at", "/_rf/vt/x"},
                                                    {"message", "ignored: no key that is read here"}}}));

  const auto broken = runProgram("qx", {"check", "-"},
                                 "{\"aps\":{},\"_sid\":\"VTQX\",\"_m\":\"m\",\"_mt\":\"\",\"_rf\":7}\n\n"
                                 "nonsense\n" +
                                     kPush);
  EXPECT_EQ(broken.exitCode, 1);
  EXPECT_EQ(broken.errors,
            "qx check: standard input: line 1: 1 error, first at /_rf\n"
            "qx check: standard input: line 3: syntax error at column 1\n");
  ASSERT_EQ(broken.lines().size(), 2U);
  EXPECT_EQ(broken.lines()[0].find("severity")->string(), "error");
  EXPECT_EQ(broken.lines()[0].find("line")->integer(), 1);
  EXPECT_EQ(broken.lines()[1].find("line")->integer(), 4);
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

TEST(AuthoringCommandTest, WhatIsNoPushIsRefusedWithItsPlace) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("push.json", "{\n  \"aps\": {},\n  \"é\": tru\n}\n");
  const std::string missing = directory.path("missing.json");
  const struct {
    std::string file;
    std::string input;
    std::string reason;
  } table[] = {
      {file, "", file + ": syntax error at line 3, column 8\n"},
      {missing, "", missing + ": No such file or directory\n"},
      {"-", "", "standard input: no push\n"},
      {"-", R"({"_rf":{}})", "standard input: neither \"aps\" nor \"content\": not a push\n"},
      {"-", R"({"content":{"badge":"1"}})",
       "standard input: /content/badge: expected an integer, found text\n"},
  };
  for (const std::string command : {"check", "pack", "unpack"}) {
    for (const auto& row : table) {
      const auto result = runProgram("qx", {command, row.file}, row.input);
      EXPECT_EQ(result.exitCode, 1);
      EXPECT_EQ(result.output, "");
      EXPECT_EQ(result.errors, "qx " + command + ": " + row.reason);
    }
  }
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
  const std::string large = R"({"aps":{},"_rf":{"x":")" + std::string(65'530, 'x') + "\"}}";
  const struct {
    std::string command;
    std::string push;
    std::string reason;
  } table[] = {
      {"pack", R"({"aps":{}})", "no _rf to pack"},
      {"pack", R"({"aps":{},"_rf":"{}"})", "_rf is not an object"},
      {"pack", R"({"aps":{},"_rf":{},"$_rf":""})", "$_rf is there already, beside _rf"},
      {"pack", large, "_rf: 65538 bytes of JSON, more than the 65535 that a device inflates"},
      {"unpack", R"({"aps":{}})", "no $_rf to unpack"},
      {"unpack", R"({"aps":{},"$_rf":"AAAA"})", "$_rf: not raw deflate data, or cut off"},
  };
  for (const auto& [command, push, reason] : table) {
    const auto result = runProgram("qx", {command, "-"}, push);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, testing::EndsWith(": standard input: " + reason + "\n"));
  }
}

}  // namespace
