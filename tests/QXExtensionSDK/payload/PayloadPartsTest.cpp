#include "QXExtensionSDK/payload/Color.h"
#include "QXExtensionSDK/payload/JSONConvertible.h"
#include "QXExtensionSDK/payload/JSONParser.h"
#include "QXExtensionSDK/payload/UserActionResolving.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using Actions = std::vector<ActionSerDeWrapper>;
using QXPlatform::Date;
using QXPlatform::Dictionary;

TEST(ColorTest, ReadsSixHexadecimalDigitsInEitherCase) {
  support::ScopedLogRecorder log;
  const auto color = parseColor("E5e50f", Logger::content());
  ASSERT_TRUE(color);
  EXPECT_DOUBLE_EQ(color->red(), 229 / 255.0);
  EXPECT_DOUBLE_EQ(color->green(), 229 / 255.0);
  EXPECT_DOUBLE_EQ(color->blue(), 15 / 255.0);
  EXPECT_DOUBLE_EQ(color->alpha(), 1.0);
  EXPECT_EQ(color->hexString(), "E5E50F");
  EXPECT_EQ(parseColor("e5e5e5", Logger::content()), parseColor("E5E5E5", Logger::content()));
  EXPECT_TRUE(log->entries().empty());
}

TEST(ColorTest, RefusesEverythingElse) {
  for (const char* text :
       {"", "E5E5E", "#E5E5E5", "#E5E5E", "E5E5E5FF", "G5E5E5", "-5E5E5", " E5E5E", "0xE5E5"}) {
    support::ScopedLogRecorder log;
    EXPECT_EQ(parseColor(text, Logger::content()), std::nullopt) << text;
    EXPECT_THAT(log->entries(), testing::ElementsAre(support::LogEntry{
                                    "ContentExtension", "ContentGeneral", QXPlatform::LogType::error,
                                    "Invalid color value=" + std::string(text)}));
  }
}

TEST(UserActionResolvingTest, TakesTheFirstActionAndItsURL) {
  support::ScopedLogRecorder log;
  const auto app = resolveUserAction(Actions{{OpenAppAction{}}, {OpenWebUrlAction{.url = "https://b"}}},
                                     Logger::content());
  EXPECT_EQ(app, (UserAction{ActionType::openApp, std::nullopt}));

  struct Case {
    Action action;
    ActionType kind;
  };
  const Case links[] = {{OpenDeeplinkAction{.url = "app:x"}, ActionType::openDeepLink},
                        {OpenWebUrlAction{.url = "app:x"}, ActionType::openWebUrl},
                        {OpenCloudPageAction{.url = "app:x"}, ActionType::openCloudPage}};
  for (const Case& each : links) {
    EXPECT_EQ(resolveUserAction(Actions{{each.action}}, Logger::content()),
              (UserAction{each.kind, QXPlatform::URL::parse("app:x")}));
  }
  EXPECT_TRUE(log->entries().empty());
}

TEST(UserActionResolvingTest, SaysWhyThereIsNoAction) {
  struct Case {
    std::optional<Actions> actions;
    std::string message;
  };
  const Case cases[] = {
      {std::nullopt, "Actions array is missing"},
      {Actions{}, "Actions array is empty"},
      {Actions{{OpenDeeplinkAction{}}, {OpenAppAction{}}}, "Invalid action state for openDeepLink"},
      {Actions{{OpenWebUrlAction{.url = "not a url"}}}, "Invalid action state for openWebUrl"},
      {Actions{{OpenCloudPageAction{.url = ""}}}, "Invalid action state for openCloudPage"},
  };
  for (const Case& each : cases) {
    support::ScopedLogRecorder log;
    EXPECT_EQ(resolveUserAction(each.actions, Logger::content()), std::nullopt);
    EXPECT_THAT(log->entries(),
                testing::ElementsAre(support::LogEntry{"ContentExtension", "ContentGeneral",
                                                       QXPlatform::LogType::error, each.message}));
  }
}

class JSONUtilitiesTest : public testing::Test {
 protected:
  JSONUtilitiesTest() { Logger::setGlobalLoglevel(0); }

  support::ScopedLogRecorder log_;
};

TEST_F(JSONUtilitiesTest, ADictionaryThatJSONCannotHoldIsRefusedWithItsLine) {
  const Dictionary dated{{"when", Date{0}}};
  EXPECT_EQ(JSONConvertible().jsonString(dated, Logger::content(), LogCategory::contentGeneral),
            std::nullopt);
  EXPECT_EQ(log_->entries().at(0),
            (support::LogEntry{"ContentExtension", "ContentGeneral", QXPlatform::LogType::error,
                               "Dictionary is not valid json convertible object"}));
  EXPECT_EQ(JSONParser().jsonString(dated), std::nullopt);
  EXPECT_TRUE(log_->mentions("Error converting dictionary to JSON: "));
}

TEST_F(JSONUtilitiesTest, TextIsPrettyPrintedAndReadsBack) {
  const Dictionary dictionary{{"a", 1}, {"b", "x"}};
  const auto text = JSONParser().jsonString(dictionary);
  EXPECT_EQ(text, "{\n  \"a\" : 1,\n  \"b\" : \"x\"\n}");
  EXPECT_EQ(JSONConvertible().jsonString(dictionary, Logger::service(), LogCategory::serviceGeneral), text);
  EXPECT_EQ(JSONParser().dictionary(*text), dictionary);
  EXPECT_TRUE(log_->has("Conversion from JSON string to dictionary: {\"a\":1,\"b\":\"x\"}"));
}

TEST_F(JSONUtilitiesTest, OnlyAnObjectBecomesADictionary) {
  EXPECT_EQ(VTQXUtility::dictionary(R"({"a":1})"), (Dictionary{{"a", 1}}));
  EXPECT_EQ(VTQXUtility::dictionary("[1]"), std::nullopt);
  EXPECT_EQ(JSONParser().dictionary("[1]"), std::nullopt);
  EXPECT_FALSE(log_->mentions("rror"));
  EXPECT_EQ(VTQXUtility::dictionary("{"), std::nullopt);
  EXPECT_TRUE(log_->mentions("Can't convert data to dictionary, error="));
  EXPECT_EQ(JSONParser().dictionary("{"), std::nullopt);
  EXPECT_TRUE(log_->mentions("Error converting JSON string to dictionary: "));
}

TEST_F(JSONUtilitiesTest, ADateThatHasNoTextIsLogged) {
  EXPECT_EQ(VTQXUtility::dateString(Date{1714554187.25}), "2024-05-01T09:03:07.250Z");
  EXPECT_EQ(VTQXUtility::dateString(Date{std::numeric_limits<double>::quiet_NaN()}), std::nullopt);
  EXPECT_TRUE(log_->has("DateString conversion failure"));
}

}  // namespace
}  // namespace QXExtensionSDK
