#include "QXPlatform/foundation/JSON.h"

#include "QXPlatform/foundation/JSONCoding.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

using testing::HasSubstr;

std::string nested(int levels) {
  const auto count = static_cast<std::size_t>(levels);
  return std::string(count, '[') + std::string(count, ']');
}

Value parsed(std::string_view text) {
  auto value = parseJSON(text);
  EXPECT_TRUE(value) << text;
  return value ? *value : Value();
}

std::string compact(const Value& value) {
  auto text = writeJSON(value, JSONStyle::compact);
  return text ? *text : "refused: " + text.error().message;
}

TEST(JSONTest, ReadsWhatTheGrammarAllows) {
  const std::pair<std::string_view, Value> cases[] = {
      {" null\r\n\t", nullptr},
      {"true", true},
      {"-0", 0},
      {"-0.0", -0.0},
      {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
      {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
      {"9223372036854775808", 9223372036854775808.0},
      {"18446744073709551616", 18446744073709551616.0},
      {"-9223372036854775809", -9223372036854775809.0},
      {"1e2", 100.0},
      {"1E+2", 100.0},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
      {"4.9406564584124654e-324", std::numeric_limits<double>::denorm_min()},
      {"1e-400", 0.0},
      {"0e400", 0.0},
      {"123456789012345678901234567890.5e-20", 1234567890.1234567890},
      {R"("")", ""},
      {R"("\u0041\n\/\"\\\b\f\r\t")", "A\n/\"\\\b\f\r\t"},
      {R"("\ud83d\ude00 \u20AC")", "\U0001F600 \u20AC"},
      {"\"\xF0\x9F\x98\x80\x7F\"", "\U0001F600\x7F"},
      {R"("a\u0000b")", std::string_view("a\0b", 3)},
      {"[]", std::vector<Value>{}},
      {"{}", Dictionary()},
      {R"([1,[2,{"a":[3]}],4])",
       std::vector<Value>{1, std::vector<Value>{2, Dictionary{{"a", std::vector<Value>{3}}}}, 4}},
      {R"({"b":1,"a":{"x":[]},"b":2})", Dictionary{{"a", Dictionary{{"x", std::vector<Value>{}}}}, {"b", 2}}},
      {R"({"k\u0065y":{"":null}})", Dictionary{{"key", Dictionary{{"", nullptr}}}}},
  };
  for (const auto& [text, expected] : cases) {
    const Value value = parsed(text);
    EXPECT_EQ(value, expected) << text;
    EXPECT_EQ(parsed(compact(value)), expected) << text;
  }
  EXPECT_TRUE(std::signbit(*parsed("-0.0").number()));
  EXPECT_EQ(compact(parsed(nested(512))), nested(512));
}

TEST(JSONTest, RefusesEverythingElse) {
  const std::vector<std::vector<std::string_view>> groups{
      {"", " ", "nul", "truefalse", "True", "'a'", "1;", "1 2", "// c\n1", "/* c */1", "[1]//", "{}{}"},
      {"NaN", "Infinity", "-", "+1", "01", "-01", "1.", ".5", "1e", "1e+", "0x10", "1e400", "1e99999999999"},
      {"[1,]", "[,1]", "[1 2]", "[1", "]", "{", "{\"a\"}", "{\"a\":}", "{\"a\":1,}", "{a:1}", "{1:1}"},
      {"\"", "\"\n\"", "\"\t\"", R"("\x41")", R"("\u12")", R"("\u12G4")", R"({"a":1 "b":2})"},
      {R"("\ud800")", R"("\ud800x")", R"("\ud800\u0041")", R"("\udc00")", R"("\udc00\ud800")"},
      {"\xEF\xBB\xBF{}", "\"\x80\"", "\"\xC0\x80\"", "\"\xC3\"", "\"\xE0\x80\x80\"", "\"\xED\xA0\x80\""},
      {"\"\xF4\x90\x80\x80\"", "\"\xF5\x80\x80\x80\"", "\"\xE2\x82\"", "[\"a\\\xFF\"]", {"\0", 1}},
      {{"1\0", 2}, {"\"\0\"", 3}}};
  for (const auto& group : groups) {
    for (const std::string_view text : group) {
      const auto value = parseJSON(text);
      ASSERT_FALSE(value) << text;
      EXPECT_FALSE(value.error().message.empty()) << text;
    }
  }
  EXPECT_FALSE(parseJSON(std::string(400, '9')));
  EXPECT_FALSE(parseJSON(nested(513)));
  EXPECT_FALSE(parseJSON(std::string(1 << 20, '[')));
}

TEST(JSONTest, SaysWhereATextIsWrong) {
  const struct {
    std::string_view text;
    std::string_view message;
  } table[] = {
      {R"({"é": ?})", "syntax error at column 7"},
      {"[1,\n 2,\n\"\xFF\"]", "syntax error at line 3, column 2"},
      {"[]\n []", "extra data at line 2, column 2"},
      {"{\n", "incomplete JSON at line 2, column 1"},
      {"", "incomplete JSON at column 1"},
  };
  for (const auto& [text, message] : table) EXPECT_EQ(parseJSON(text).error().message, message) << text;
}

TEST(JSONTest, KeepsEveryDoubleToTheLastBit) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    if (!std::isfinite(number)) continue;
    ASSERT_EQ(parsed(compact(number)), Value(number));
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.16e", number);
    ASSERT_EQ(parsed(digits), Value(number)) << digits;
  }
  EXPECT_EQ(compact(3000.0), "3000.0");
  EXPECT_EQ(compact(-0.0), "-0.0");
  EXPECT_EQ(compact(1e22), "1e+22");
}

TEST(JSONTest, LongTextsAndEscapesInAnyPlaceSurvive) {
  for (std::size_t length : {0U, 1U, 3U, 4U, 7U, 8U, 9U, 63U, 5000U}) {
    for (const std::string_view odd : {"\"", "\\", "\n", "\x1F", "\x7F", "\u00E9", "\U0001F600"}) {
      for (std::size_t place = 0; place <= std::min<std::size_t>(length, 20); ++place) {
        const Value text(std::string(length, 'x').insert(place, odd));
        const Value tree(Dictionary{{*text.string(), text}});
        ASSERT_EQ(parsed(compact(tree)), tree);
        ASSERT_FALSE(writeJSON(std::string(length, 'x').insert(place, "\xC3"), JSONStyle::compact));
      }
    }
  }
}

TEST(JSONTest, WritesBothStyles) {
  const Value tree = parsed(R"({"b":[1,2.5,{}],"a":{"t":"x\u0001\u00e9/"},"e":[]})");
  EXPECT_EQ(compact(tree), "{\"a\":{\"t\":\"x\\u0001\u00E9/\"},\"b\":[1,2.5,{}],\"e\":[]}");
  EXPECT_EQ(*writeJSON(tree, JSONStyle::pretty), R"({
  "a" : {
    "t" : "x\u0001é/"
  },
  "b" : [
    1,
    2.5,
    {}
  ],
  "e" : []
})");
}

TEST(JSONTest, RefusesToWriteWhatJSONCannotHoldAndSaysWhere) {
  Value deep;
  for (int i = 0; i <= kJSONWritingDepthLimit; ++i) deep = Value(std::vector<Value>{deep});
  const Value misfits[] = {Date{0}, Data("ab"), std::numeric_limits<double>::infinity(), "\xC3", deep};
  for (const Value& misfit : misfits) {
    const Value tree(Dictionary{{"a/b", std::vector<Value>{1, misfit}}});
    const auto text = writeJSON(tree, JSONStyle::compact);
    ASSERT_FALSE(text);
    EXPECT_THAT(text.error().message, HasSubstr("/a~1b/1"));
    EXPECT_FALSE(isValidJSONObject(tree));
  }
  EXPECT_FALSE(writeJSON(Dictionary{{"\xFF", 1}}, JSONStyle::compact));
  EXPECT_TRUE(isValidJSONObject(std::vector<Value>{1}));
  EXPECT_TRUE(isValidJSONObject(Dictionary()));
  EXPECT_FALSE(isValidJSONObject(1));
  EXPECT_FALSE(isValidJSONObject(nullptr));
}

TEST(JSONTest, EveryValueHasADescription) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Value tree(
      Dictionary{{"d", Date{0.25}}, {"b", Data("abc")}, {"n", nan}, {"t", "x\xFFy"}, {"e", Date{nan}}});
  EXPECT_EQ(tree.description(),
            "{\"b\":\"3 "
            "bytes\",\"d\":\"1970-01-01T00:00:00.250Z\",\"e\":\"nan\",\"n\":\"nan\",\"t\":\"x\uFFFDy\"}");
  EXPECT_EQ(Value("plain \"text\"").description(), "plain \"text\"");
  EXPECT_EQ(Value(Date{0}).description(), "1970-01-01T00:00:00.000Z");
  EXPECT_EQ(Value(-nan).description(), "nan");
  EXPECT_EQ(Value(7).description(), "7");
  EXPECT_EQ(Value().description(), "null");
  Value deep(1);
  for (int i = 0; i < 600; ++i) deep = Value(std::vector<Value>{deep});
  EXPECT_THAT(deep.description(), HasSubstr("[\"...\"]"));
}

enum class Flag : int { off = 0, on = 1 };
constexpr auto rawValues(RawValuesOf<Flag>) {
  return std::to_array({Flag::off, Flag::on});
}

enum class Size { small, large };
constexpr auto rawValues(RawValuesOf<Size>) {
  return std::to_array<RawCase<Size>>({{Size::small, "S"}, {Size::large, "L"}});
}

struct Style {
  std::optional<Size> size;
  std::optional<int> margin;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(jsonField("fz", &Style::size), jsonField("m", &Style::margin));
  }
  friend bool operator==(const Style&, const Style&) = default;
};

// Read-only outside, and made only by its own constructor or by decoding.
class Panel {
 public:
  explicit Panel(std::string name) : name_(std::move(name)) {}
  const std::string& name() const { return name_; }
  const std::optional<Style>& style() const { return style_; }

 private:
  friend JSONRecordAccess;
  Panel() = default;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(jsonField("n", &Panel::name_), jsonField("s", &Panel::style_));
  }

  std::string name_;
  std::optional<Style> style_;
};

struct Everything {
  std::string text;
  std::int64_t integer = 0;
  double number = 0;
  bool boolean = false;
  Flag flag = Flag::off;
  std::vector<Panel> panels;
  Value any;
  std::optional<std::uint8_t> small;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(
        jsonField("text", &Everything::text), jsonField("integer", &Everything::integer),
        jsonField("number", &Everything::number), jsonField("boolean", &Everything::boolean),
        jsonField("flag", &Everything::flag), jsonField("panels", &Everything::panels),
        jsonField("any", &Everything::any), jsonField("small", &Everything::small));
  }
};

constexpr std::string_view kFull =
    R"({"text":"a\"b","integer":-7,"number":0.5,"boolean":true,"flag":1,)"
    R"("panels":[{"n":"p1","s":{"fz":"L","m":3}},{"n":"p2"}],"any":{"x":[null]},"small":255})";

TEST(JSONCodingTest, WritesWhatItReads) {
  const auto record = decodeJSON<Everything>(kFull);
  ASSERT_TRUE(record) << record.error().description();
  EXPECT_EQ(record->text, "a\"b");
  EXPECT_EQ(record->flag, Flag::on);
  ASSERT_EQ(record->panels.size(), 2U);
  EXPECT_EQ(record->panels[0].style(), (Style{Size::large, 3}));
  EXPECT_EQ(record->panels[1].style(), std::nullopt);
  EXPECT_EQ(record->small, 255);
  EXPECT_EQ(*encodeJSON(*record), kFull);
  EXPECT_EQ(*encodeJSON(Style()), "{}");
  EXPECT_EQ(*encodeJSON(std::vector<Panel>{Panel("x")}), R"([{"n":"x"}])");
}

// The full record with one member replaced.
Result<Everything, DecodingError> decodeWith(std::string_view key, std::string_view json) {
  const Value base = *parseJSON(kFull);
  return decodeValue<Everything>(base.dictionary()->setting(key, *parseJSON(json)), "/at");
}

TEST(JSONCodingTest, ConvertsBetweenNumbersOnlyWhereNothingIsLost) {
  EXPECT_EQ(decodeWith("integer", "3000.0")->integer, 3000);
  EXPECT_EQ(decodeWith("integer", "-9223372036854775808.0")->integer,
            std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(decodeWith("number", "3")->number, 3.0);
  EXPECT_EQ(decodeWith("flag", "1.0")->flag, Flag::on);
  EXPECT_EQ(decodeWith("small", "null")->small, std::nullopt);
  EXPECT_EQ(decodeWith("any", "null")->any, Value());
  EXPECT_TRUE(decodeWith("unknown", "[]"));
}

TEST(JSONCodingTest, SaysWhereAndWhyARecordCannotBeRead) {
  struct Case {
    std::string_view key;
    std::string_view json;
    std::string_view error;
  };
  const Case cases[] = {
      {"text", "null", "/at/text: expected text, found null"},
      {"text", "1", "/at/text: expected text, found an integer"},
      {"integer", "3000.5", "/at/integer: expected an integer, found a fraction"},
      {"integer", "9223372036854775808", "/at/integer: expected an integer, found one out of range"},
      {"integer", "\"1\"", "/at/integer: expected an integer, found text"},
      {"integer", "true", "/at/integer: expected an integer, found a boolean"},
      {"number", "\"1\"", "/at/number: expected a number, found text"},
      {"boolean", "1", "/at/boolean: expected a boolean, found an integer"},
      {"flag", "2", "/at/flag: not one of 0, 1"},
      {"flag", "\"1\"", "/at/flag: expected an integer, found text"},
      {"panels", "{}", "/at/panels: expected an array, found an object"},
      {"panels", "[{\"n\":\"\"},[]]", "/at/panels/1: expected an object, found an array"},
      {"panels", "[{}]", "/at/panels/0/n: missing"},
      {"panels", R"([{"n":"","s":{"fz":"XL"}}])", "/at/panels/0/s/fz: not one of S, L"},
      {"small", "256", "/at/small: expected an integer, found one out of range"},
      {"small", "-1", "/at/small: expected an integer, found one out of range"},
  };
  for (const auto& [key, json, error] : cases) {
    const auto record = decodeWith(key, json);
    ASSERT_FALSE(record) << key << json;
    EXPECT_EQ(record.error().description(), error);
  }
  EXPECT_EQ(decodeJSON<Style>("[]").error().description(), "expected an object, found an array");
  EXPECT_EQ(decodeJSON<Style>("{").error().message.substr(0, 10), "not JSON: ");
}

TEST(JSONCodingTest, GathersAllThatIsWrongWhenAsked) {
  const auto errors = decodingErrors<Everything>(
      *parseJSON(R"({"text":1,"integer":2,"number":"","boolean":true,"flag":0,"any":0,
                     "panels":[{"n":""},7,{"s":{"fz":"XL","m":"3"}}]})"),
      "/at");
  std::vector<std::string> found;
  for (const DecodingError& error : errors) found.push_back(error.path.text());
  EXPECT_EQ(found, (std::vector<std::string>{"/at/text", "/at/number", "/at/panels/1", "/at/panels/2/n",
                                             "/at/panels/2/s/fz", "/at/panels/2/s/m"}));
  EXPECT_TRUE(decodingErrors<Everything>(*parseJSON(kFull)).empty());
}

TEST(JSONCodingTest, RefusesToWriteWhatJSONCannotHold) {
  auto record = *decodeJSON<Everything>(kFull);
  record.number = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(encodeJSON(record).error().message, "/number: not a finite number");
  record.number = 1;
  record.panels.emplace_back("\xFF");
  EXPECT_EQ(encodeJSON(record).error().message, "/panels/2/n: not UTF-8 text");
  record.panels.pop_back();
  record.any = Value(Dictionary{{"d", Date{0}}});
  EXPECT_EQ(encodeJSON(record).error().message, "/any/d: a date");
}

}  // namespace
}  // namespace QXPlatform
