#include "QXPlatform/foundation/JSONCoding.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

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
