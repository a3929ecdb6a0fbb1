// What `qx check` finds in a push.

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/foundation/Base64.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Deflate.h"
#include "tests/support/Test.h"
#include "tools/qx/check/PushChecks.h"
#include "tools/qx/check/SourceText.h"
#include "tools/qx/check/SyntaxCheck.h"

namespace {

using qx::Finding;
using QXExtensionSDK::Logger;
using support::packed;

constexpr std::string_view kGood =
    R"({"aps":{"mutable-content":1,"category":"c"},"_sid":"vtqx","_m":"m","_mt":"t","_r":"r","_pb":{},"_co":"Mzo2OkJVLTc=",)"
    R"("_rf":{"vt":{"t":"0","tms":3000,"s":{"bgc":"E5E5E5"},"it":[)"
    R"({"id":"a","md":{"ul":"https://e.com/a.PNG"},"ti":{"tx":"A","s":{"fc":"2e2e2e","fz":"L","an":"C"}},)"
    R"("ac":[{"t":"2","ul":"https://e.com/"}],"s":{"bgc":"FFFFFF"}},)"
    R"({"id":"b","md":{"ul":"http://[::1]/b.webp","at":{"tx":"?"}},"sti":{"tx":"B"},"ac":[{"t":"0"}]}]}}})";

std::string good(std::string_view part, std::string_view replacement) {
  std::string push(kGood);
  const std::size_t position = push.find(part);
  if (position == std::string::npos) throw std::runtime_error("No such part: " + std::string(part));
  return push.replace(position, part.size(), replacement);
}

std::vector<std::string> check(std::string_view text) {
  Logger::setGlobalLoglevel(4);
  const auto push = qx::PushDocument::parse(text);
  if (!push) return {push.error().message};
  std::vector<std::string> found;
  for (const Finding& finding : qx::checkPush(*push, qx::PushLimit::apns)) {
    found.push_back((finding.isError() ? "error " : "warning ") + finding.at + ": " + finding.message +
                    (finding.hint.empty() ? "" : " (" + finding.hint + ")"));
  }
  return found;
}

struct Case {
  std::string part;
  std::string replacement;
  std::vector<std::string> findings;  // how each begins
};

void expectFindings(const std::vector<Case>& table) {
  for (const auto& [part, replacement, expected] : table) {
    const auto found = check(good(part, replacement));
    const auto isSo = [](const std::string& each, const std::string& begin) {
      return each.starts_with(begin);
    };
    EXPECT_TRUE(std::ranges::equal(found, expected, isSo))
        << part << " -> " << replacement << ": " << testing::PrintToString(found);
  }
}

TEST(CheckTest, FindsNothingInAGoodPush) {
  EXPECT_THAT(check(kGood), testing::IsEmpty());
  EXPECT_THAT(check(R"({"content":{"userInfo":)" + std::string(kGood) + "}}"), testing::IsEmpty());
  EXPECT_THAT(check(good(R"("_rf":)", R"("$_rf":"","_rf":)")), testing::IsEmpty()) << "inflated by a device";
  EXPECT_THAT(check(R"({"aps":{"mutable-content":1.0},"_sid":"VTQX","_m":"m","_mt":"t"})"),
              testing::IsEmpty());
}

TEST(CheckTest, SaysWhatThePushItselfLacks) {
  expectFindings({
      {R"("_sid":"vtqx",)", "", {"error /_sid: missing: "}},
      {R"("vtqx")", R"("VTQXX")", {"error /_sid: not VTQX: "}},
      {R"("vtqx")", "1", {"error /_sid: not text: "}},
      {R"("mutable-content":1,"category":"c")",
       R"("mutable-content":true,"category":"")",
       {"error /aps/mutable-content: not 1: ", "error /aps/category: missing: "}},
      {R"("category":"c")",
       R"("category":"c","alert":["Hi"])",
       {"warning /aps/alert: ignored: neither text"}},
      {R"("category":"c")",
       R"("category":"c","alert":{"title":"Hi","body":7})",
       {"warning /aps/alert/body: ignored: not text (write \"7\")"}},
      {R"("category":"c")",
       R"("category":"c","badge":"3","sound":{"nam":"s"})",
       {"warning /aps/badge: ignored: not an integer (write 3)", "warning /aps/sound: ignored"}},
      {R"("_m":"m",)", "", {"warning /_m: missing: no receipt"}},
      {R"("_mt":"t")", R"("_mt":null)", {"warning /_mt: not text: no receipt"}},
      {R"("_r":"r")", R"("_r":5)", {"warning /_r: ignored"}},
      {R"("_pb":{})", R"("_pb":[])", {"warning /_pb: ignored"}},
      {R"("_m":"m","_mt":"t","_r":"r")",
       R"("_mt":"t")",
       {"warning /_m: missing", "warning /_r: neither _m nor _r"}},
      {"Mzo2OkJVLTc=", "?", {"warning /_co: says nothing"}},
      {R"("Mzo2OkJVLTc=")", "7", {"warning /_co: not text"}},
      {"Mzo2OkJVLTc=", QXPlatform::encodeBase64("1:0:"), {"warning /_co: names no module"}},
      {"Mzo2OkJVLTc=", QXPlatform::encodeBase64("0:4:"), {"warning /_co: names no module"}},
  });
}

TEST(CheckTest, CountsTheBytesOfAPushWithoutWhiteSpace) {
  const std::string frame = R"({ "aps" : {"mutable-content":1}, "_sid": "VTQX", "_m":"m", "_mt":"" })";
  const std::size_t room = 4096 - support::dictionary(frame).description().size();
  const auto filled = [&](std::size_t count) {
    return std::string(frame).insert(frame.size() - 3, std::string(count, 'x'));
  };
  EXPECT_THAT(check(filled(room)), testing::IsEmpty());
  EXPECT_THAT(check(filled(room + 1)),
              testing::ElementsAre("error : 4097 bytes without white space, over the 4096 of apns: _mt 4044, "
                                   "aps 27, _sid 13, _m 8"));
  const auto push = qx::PushDocument::parse(filled(room));
  EXPECT_EQ(qx::checkPush(*push, qx::PushLimit::webPush).size(), 1U);
  const auto request = qx::PushDocument::parse(R"({"content":{"body":")" + std::string(4000, 'x') +
                                               R"(","userInfo":{"_sid":"VTQX","_m":"m","_mt":"t"}}})");
  EXPECT_THAT(qx::checkPush(*request, qx::PushLimit::apns), testing::IsEmpty());
  EXPECT_EQ(qx::checkPush(*request, qx::PushLimit::webPush).size(), 1U) << "all of it is sealed";
}

// What the framework's decoder refuses, with what a device cannot know: how it is meant to be written.
TEST(CheckTest, ReportsEveryErrorThatKeepsTheCarouselFromBeingShown) {
  expectFindings({
      {R"("t":"0")", R"("t":0)", {"error /_rf/vt/t: expected text, found an integer (write \"0\")"}},
      {R"({"vt":)",
       R"({"tv":)",
       {"error /_rf/vt: missing", "warning /_rf/tv: ignored: no key that is read here (did you mean vt?)"}},
      {R"("tms":3000,"s":{"bgc":"E5E5E5"})",
       R"("tms":"3","s":{"bgc":7})",
       {"error /_rf/vt/tms: expected an integer, found text (write 3)", "error /_rf/vt/s/bgc: "}},
      {R"("fc":"2e2e2e","fz":"L")",
       R"("fc":"FFFF00","fz":1)",
       {"error /_rf/vt/it/0/ti/s/fz: expected text, found an integer (write one of S, M, L)",
        "warning /_rf/vt/it/0/ti/s/fc: hard to read"}},
      {R"("fz":"L")", R"("fz":"l")", {"error /_rf/vt/it/0/ti/s/fz: not one of S, M, L (write \"L\")"}},
      {R"({"id":"b","md":)",
       R"(7,{"dm":)",
       {"error /_rf/vt/it/1: expected an object", "error /_rf/vt/it/2/id: missing",
        "error /_rf/vt/it/2/md: missing", "warning /_rf/vt/it/2/dm"}},
  });
}

TEST(CheckTest, WarnsOfWhatIsIgnoredOrReplaced) {
  expectFindings({
      {R"("tms":3000)", R"("tms":0)", {"warning /_rf/vt/tms: below 1"}},
      {R"("it":[)",
       R"("it":[],"ti":[)",
       {"error /_rf/vt/it: no panels", "warning /_rf/vt/ti: ignored", "warning /_rf/vt/tms: ignored"}},
      {R"("bgc":"E5E5E5")",
       R"("bgc":"#abc")",
       {"warning /_rf/vt/s/bgc: no colour, replaced by the default: six hexadecimal digits, RRGGBB, are one "
        "(write \"aabbcc\")"}},
      {R"("fc":"2e2e2e")",
       R"("fc":"black","a/b~":1)",
       {"warning /_rf/vt/it/0/ti/s/a~1b~0: ignored", "warning /_rf/vt/it/0/ti/s/fc: no colour"}},
      {R"("ac":[{"t":"0"}])",
       R"("ac":[{"t":"0","ul":"x"},{"t":"0"},{"t":"0"}])",
       {"warning /_rf/vt/it/1/ac/0/ul: ignored", "warning /_rf/vt/it/1/ac/1: ignored"}},
      {R"({"t":"2","ul":"https://e.com/"})", R"({"t":"1"})", {"warning /_rf/vt/it/0/ac/0/ul: no URL"}},
      {R"(,"ac":[{"t":"0"}])", "", {"warning /_rf/vt/it/1: a panel without action"}},
      {R"("sti":{"tx":"B"})", R"("ti":{"tx":""})", {"warning /_rf/vt/it/1: a panel without text"}},
      {R"("sti":{"tx":"B"})",
       "\"ti\":{\"tx\":\" \u00A0\u3000\u200B\u2069\"}",
       {"warning /_rf/vt/it/1/ti/tx: nothing but white"}},
      {R"("fc":"2e2e2e")",
       R"("fc":"FFFF00")",
       {"warning /_rf/vt/it/0/ti/s/fc: hard to read: FFFF00 on the panel's FFFFFF has a contrast of 1.0:1"}},
      {R"("bgc":"FFFFFF")", R"("bgc":"000000")", {"warning /_rf/vt/it/0/ti/s/fc: hard to read"}},
      {"a.PNG", "a.png/..;x", {"warning /_rf/vt/it/0/md/ul: no thumbnail"}},
      {"a.PNG", "a?.png", {"warning /_rf/vt/it/0/md/ul: no thumbnail"}},
      {"https://e.com/a.PNG", "", {"warning /_rf/vt/it/0/md/ul: no URL"}},
      {"https://e.com/a.PNG", "http://e.com/a.png", {"warning /_rf/vt/it/0/md/ul: plain http"}},
      {"http://[::1]/b.webp", "file:///b.png", {"warning /_rf/vt/it/1/md/ul: neither https nor http"}},
      {"http://[::1]/b.webp", "https:/b.png", {"warning /_rf/vt/it/1/md/ul: a URL without a host"}},
      {"http://[::1]/b.webp", "http://?", {"warning /_rf/vt/it/1/md/ul: a URL without a host"}},
      {"http://[::1]/b.webp", "https://e.com:99999/", {"warning /_rf/vt/it/1/md/ul: no port 99999"}},
      {"http://[::1]/b.webp", "https://e.com:0/", {"warning /_rf/vt/it/1/md/ul: no port 0"}},
      {"http://[::1]/b.webp", "https://a%20b:80/", {"warning /_rf/vt/it/1/md/ul: no host a"}},
      {"http://[::1]/b.webp", "https://e.com/b.SVGZ", {"warning /_rf/vt/it/1/md/ul: a .svgz is no image"}},
  });
}

TEST(CheckTest, SaysWhyACompressedFieldIsNotInflated) {
  const struct {
    std::string field;
    std::string message;
  } table[] = {
      {"7", "not text"},
      {R"("")", "empty"},
      {R"("YWJj\n")", "not base64"},
      {R"("AAAA")", "not raw deflate data, or cut off"},
      {'"' + packed("\xFF") + '"', "inflates to what is no UTF-8"},
      {'"' + packed("{\n\"vt\": ?}") + '"', "inflates to what is no JSON: syntax error at line 2, column 7"},
      {'"' + packed("[]") + '"', "inflates to JSON that is no object"},
      {'"' + packed(std::string(65'536, ' ')) + '"', "inflates to more bytes than the 65535"},
  };
  for (const auto& [field, message] : table) {
    const auto found =
        check(R"({"content":{"userInfo":{"_sid":"VTQX","_m":"","_mt":"","$_rf":)" + field + "}}}");
    EXPECT_THAT(found, testing::ElementsAre(testing::StartsWith("error /$_rf: " + message)));
  }
  EXPECT_THAT(check(good(R"("_rf":)", R"("$_rf":")" + packed(support::carousel("[]")) + R"(","_rf":)")),
              testing::ElementsAre("error /_rf/vt/it: no panels: there is nothing to show",
                                   "warning /_rf: replaced by what $_rf inflates to"));
  EXPECT_THAT(check(good(R"("_rf":)", R"("$_rf":"?","_rf":)")),
              testing::ElementsAre(testing::StartsWith("warning /$_rf: ignored: not base64")));
}

TEST(SourceTextTest, FindsTheValueOrTheNearestOneAroundIt) {
  const std::string_view text = "{\n \"a/~\": [1, {\"x\\\"]\": \"é\", \"y\": tru}]\n,\"d\":1,\"d\":[[],{}]}";
  const struct {
    std::string_view pointer;
    std::size_t line;
    std::size_t column;
  } table[] = {
      {"", 1, 1},
      {"/a~1~0", 2, 9},
      {"/a~1~0/0", 2, 10},
      {"/a~1~0/1/x\"]", 2, 22},
      {"/a~1~0/1/y", 2, 32},
      {"/a~1~0/1/z/w", 2, 13},
      {"/a~1~0/7", 2, 9},
      {"/d", 3, 12},
      {"/d/1", 3, 16},
      {"/none", 1, 1},
  };
  for (const auto& [pointer, line, column] : table) {
    const auto position = qx::positionOf(text, qx::offsetOf(text, pointer));
    EXPECT_EQ(std::pair(position.line, position.column), std::pair(line, column)) << pointer;
  }
}

TEST(SyntaxCheckTest, SaysWhatIsWrongInWordsOfThoseWhoWriteByHand) {
  const struct {
    std::string text;
    std::size_t offset;
    std::string message;
  } table[] = {
      {"\xEF\xBB\xBF{}", 0, "a byte order mark"},
      {std::string("{\0}\0", 4), 0, "UTF-16"},
      {R"({"a":1,})", 6, "a comma after the last element"},
      {R"([1, ])", 2, "a comma after the last element"},
      {R"({"a":1 // one
})",
       7, "a comment"},
      {R"({'a':1})", 1, "single quotes"},
      {"{\u201Ca\u201D:1}", 1, "curly quotes"},
      {R"({a:1})", 1, "a key without quotes"},
      {R"({"a":1 "b":2})", 7, "a comma or a colon is missing"},
      {R"({$_rf:""})", 1, "a key without quotes"},
      {R"({"a":True})", 5, "True, which JSON does not have"},
      {"{\"a\":\"x\n, \"b\":1}", 7, "a line ends within a text"},
      {R"({"a":"it\'s"})", 8, "an escape that JSON does not have"},
      {R"({"a":"\ud800"})", 6, "one half of a surrogate pair"},
      {R"({"a" 1})", 5, "a comma or a colon is missing"},
      {R"({"a":[1)", 7, "the text ends too early"},
      {"{}\n{}", 3, "more text after the end"},
      {"{\"a\":\"\xFF\"}", 6, "not UTF-8"},
  };
  for (const auto& [text, offset, message] : table) {
    const auto problem = qx::findSyntaxProblem(text);
    ASSERT_TRUE(problem) << text;
    EXPECT_THAT(problem->message, testing::StartsWith(message)) << text;
    EXPECT_EQ(problem->offset, offset) << text;
  }
  EXPECT_FALSE(qx::findSyntaxProblem(" [{}] "));
}

}  // namespace
