// What `qx check` finds in a push.

#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/JSON.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Deflate.h"
#include "tests/support/Test.h"
#include "tools/qx/CompressedRichFeatures.h"
#include "tools/qx/check/PushChecks.h"

namespace {

using qx::Finding;
using QXExtensionSDK::Logger;
using QXPlatform::Dictionary;
using QXPlatform::Value;
using support::packed;

constexpr std::string_view kGood =
    R"({"aps":{},"_sid":"vtqx","_m":"m","_mt":"t","_r":"r","_pb":{},"_co":"Mzo2OkJVLTc=",)"
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
  for (const Finding& finding : qx::checkPush(*push)) {
    const bool isError = finding.severity == Finding::Severity::error;
    found.push_back((isError ? "error " : "warning ") + finding.at + ": " + finding.message);
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
  EXPECT_THAT(check(R"({"aps":{},"_sid":"VTQX","_m":"m","_mt":"t"})"), testing::IsEmpty());
}

TEST(CheckTest, WarnsOfWhatThePushItselfLacks) {
  expectFindings({
      {R"("_sid":"vtqx",)", "", {"warning /_sid: missing: "}},
      {R"("vtqx")", R"("VTQXX")", {"warning /_sid: not VTQX: "}},
      {R"("vtqx")", "1", {"warning /_sid: not text: "}},
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
  const std::string frame = R"({ "aps" : {}, "_sid": "VTQX", "_m":"m", "_mt":"" })";
  const std::size_t room = 4096 - support::dictionary(frame).description().size();
  const auto filled = [&](std::size_t count) {
    return std::string(frame).insert(frame.size() - 3, std::string(count, 'x'));
  };
  EXPECT_THAT(check(filled(room)), testing::IsEmpty());
  EXPECT_THAT(check(filled(room + 1)),
              testing::ElementsAre("warning : 4097 bytes without white space, over the 4096 that the push "
                                   "service takes"));
}

TEST(CheckTest, ReportsEveryErrorThatKeepsTheCarouselFromBeingShown) {
  expectFindings({
      {R"("t":"0")", R"("t":0)", {"error /_rf/vt/t: expected text, found an integer"}},
      {R"("t":"0")", R"("t":"1")", {"error /_rf/vt/t: not one of 0"}},
      {R"({"vt":)", R"({"tv":)", {"error /_rf/vt: missing", "warning /_rf/tv: ignored"}},
      {R"("tms":3000,"s":{"bgc":"E5E5E5"})",
       R"("tms":"3","s":{"bgc":7})",
       {"error /_rf/vt/tms: expected an integer, found text", "error /_rf/vt/s/bgc: "}},
      {R"("fz":"L","an":"C")",
       R"("fz":"XL","an":"left")",
       {"error /_rf/vt/it/0/ti/s/fz: not one of S, M, L", "error /_rf/vt/it/0/ti/s/an: not one of B, C, E"}},
      {R"("ac":[{"t":"2")", R"("ac":[{"t":"4")", {"error /_rf/vt/it/0/ac/0/t: not one of 0, 1, 2, 3"}},
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
       {"warning /_rf/vt/ti: ignored", "warning /_rf/vt/it: no panels", "warning /_rf/vt/tms: ignored"}},
      {R"("bgc":"E5E5E5")", R"("bgc":"#E5E5E5")", {"warning /_rf/vt/s/bgc: no colour"}},
      {R"("fc":"2e2e2e")",
       R"("fc":"black","a/b~":1)",
       {"warning /_rf/vt/it/0/ti/s/a~1b~0: ignored", "warning /_rf/vt/it/0/ti/s/fc: no colour"}},
      {R"("ac":[{"t":"0"}])",
       R"("ac":[{"t":"0","ul":"x"},{"t":"0"},{"t":"0"}])",
       {"warning /_rf/vt/it/1/ac/0/ul: ignored", "warning /_rf/vt/it/1/ac/1: ignored"}},
      {R"({"t":"2","ul":"https://e.com/"})", R"({"t":"1"})", {"warning /_rf/vt/it/0/ac/0/ul: no URL"}},
      {R"("sti":{"tx":"B"})", R"("ti":{"tx":""})", {"warning /_rf/vt/it/1: a panel without text"}},
      {"a.PNG", "a.png/..;x", {"warning /_rf/vt/it/0/md/ul: no thumbnail"}},
      {"a.PNG", "a?.png", {"warning /_rf/vt/it/0/md/ul: no thumbnail"}},
      {"https://e.com/a.PNG", "", {"warning /_rf/vt/it/0/md/ul: no URL"}},
      {"https://e.com/a.PNG", "http://e.com/a.png", {"warning /_rf/vt/it/0/md/ul: plain http"}},
      {"http://[::1]/b.webp", "file:///b.png", {"warning /_rf/vt/it/1/md/ul: neither https nor http"}},
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
    EXPECT_THAT(found, testing::ElementsAre(testing::StartsWith("error /content/userInfo/$_rf: " + message)));
  }
  EXPECT_THAT(check(good(R"("_rf":)", R"("$_rf":")" + packed(support::carousel("[]")) + R"(","_rf":)")),
              testing::ElementsAre("warning /_rf: replaced by what $_rf inflates to",
                                   "warning /_rf/vt/it: no panels: the carousel is empty"));
}

// Every value of the tree, in turn, as something else.
void forEachVariant(const Value& value, const std::function<void(const Value&)>& use) {
  static const auto shapes = QXPlatform::parseJSON(
      R"([null,true,-1,1.5,1e300,"","0","é",[],[[]],[{}],{},{"t":"1"},{"":{"~/":[]}}])");
  for (const Value& shape : shapes->elements()) use(shape);
  if (const auto object = value.dictionary()) {
    for (const auto& [key, member] : *object) {
      use(object->removing(key));
      forEachVariant(member, [&, &name = key](const Value& variant) { use(object->setting(name, variant)); });
    }
  }
  for (std::size_t i = 0; i < value.elements().size(); ++i) {
    std::vector<Value> copy(value.elements().begin(), value.elements().end());
    forEachVariant(value.elements()[i], [&](const Value& variant) {
      copy[i] = variant;
      use(copy);
    });
  }
}

bool hasError(const std::vector<std::string>& findings) {
  return std::ranges::any_of(findings, [](const std::string& each) { return each.starts_with("error "); });
}

// An error is reported exactly when the framework shows no carousel, whatever the push looks like, and a
// compressed push fares like a plain one.
TEST(CheckTest, AgreesWithTheFrameworkOnEveryShape) {
  const Dictionary push = support::dictionary(kGood);
  int variants = 0;
  forEachVariant(*push.find("_rf"), [&](const Value& richFeatures) {
    ++variants;
    const Dictionary plain = push.setting("_rf", richFeatures);
    const auto found = check(plain.description());
    const auto model =
        QXExtensionSDK::PayloadCarouselModelParser(Logger::content()).parse(*support::makeRequest(plain));
    EXPECT_EQ(hasError(found), !model) << richFeatures.description();
    if (!richFeatures.isDictionary()) return;
    const auto field = qx::compressRichFeatures(*richFeatures.dictionary());
    EXPECT_EQ(check(push.removing("_rf").setting("$_rf", *field).description()), found);
  });
  EXPECT_GT(variants, 500);
  forEachVariant(push, [](const Value& variant) { check(variant.description()); });
}

}  // namespace
