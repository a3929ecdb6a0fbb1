#include "QXExtensionSDK/payload/CarouselModel.h"

#include "QXExtensionSDK/payload/Color.h"
#include "QXExtensionSDK/payload/JSONConvertible.h"
#include "QXExtensionSDK/payload/JSONParser.h"
#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "QXExtensionSDK/payload/UserActionResolving.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/payload/ViewTemplateCheck.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using testing::ElementsAre;
using Actions = std::vector<ActionSerDeWrapper>;
using QXPlatform::Date;
using QXPlatform::Dictionary;
using support::carousel;
using support::requestOf;

QXPlatform::Result<CarouselModel, QXPlatform::DecodingError> decode(const std::string& json) {
  return PayloadCarouselModelParser::decode(support::dictionary(json));
}

constexpr std::string_view kEverything =
    R"({"vt":{"t":"0","tms":3000,"s":{"bgc":"E5E5E5"},"it":[)"
    R"({"id":"p1","md":{"ul":"IMAGE","s":{"bgc":"000000"},"at":{"tx":"Alt"}},)"
    R"("ti":{"tx":"Title","s":{"fc":"2E2E2E","fz":"L","an":"C","fs":"B"}},)"
    R"("sti":{"tx":"Subtitle","s":{"fz":"S","an":"B","fs":"I"}},)"
    R"("ac":[{"t":"2","ul":"LINK"},{"t":"0"},{"t":"1"},{"t":"3","ul":""}],"s":{"bgc":"nonsense"}},)"
    R"({"id":"","md":{"ul":""}}]}})";

TEST(CarouselModelTest, HoldsAllThatAPayloadSays) {
  const auto model = decode(std::string(kEverything));
  ASSERT_TRUE(model) << model.error().description();
  const ViewTemplate& viewTemplate = model->viewTemplate;
  EXPECT_EQ(viewTemplate.timerInMilliSec, 3000);
  EXPECT_EQ(viewTemplate.style, GenericStyle{"E5E5E5"});
  ASSERT_EQ(viewTemplate.items.size(), 2U);

  const PanelItem& panel = viewTemplate.items[0];
  EXPECT_EQ(panel.identifier, "p1");
  EXPECT_EQ(panel.media, (Media{"IMAGE", GenericStyle{"000000"}, TextBlock{"Alt", std::nullopt}}));
  EXPECT_EQ(
      panel.title,
      (TextBlock{"Title", TextStyle{"2E2E2E", FontSize::large, TextAlignmentMode::center, FontStyle::bold}}));
  EXPECT_EQ(panel.subTitle,
            (TextBlock{"Subtitle", TextStyle{std::nullopt, FontSize::small, TextAlignmentMode::beginning,
                                             FontStyle::italic}}));
  EXPECT_EQ(panel.actions, (std::vector<ActionSerDeWrapper>{{OpenWebUrlAction{.url = "LINK"}},
                                                            {OpenAppAction{}},
                                                            {OpenDeeplinkAction{}},
                                                            {OpenCloudPageAction{.url = ""}}}));
  EXPECT_EQ(panel.style, GenericStyle{"nonsense"});
  EXPECT_EQ(viewTemplate.items[1], PanelItem());
}

TEST(CarouselModelTest, IsWrittenAsItWasRead) {
  const auto text = QXPlatform::encodeJSON(*decode(std::string(kEverything)));
  ASSERT_TRUE(text);
  EXPECT_EQ(*text, kEverything);
}

TEST(CarouselModelTest, TakesNullForAbsentAndIgnoresWhatItDoesNotKnow) {
  const auto model = decode(
      R"({"x":1,"vt":{"t":"0","tms":null,"s":null,"it":[{"id":"","md":{"ul":"","at":null},"ac":null,"y":[]}]}})");
  ASSERT_TRUE(model) << model.error().description();
  CarouselModel bare;
  bare.viewTemplate.items.emplace_back();
  EXPECT_EQ(*model, bare);
  EXPECT_EQ(decode(carousel("[]", R"("tms":2500.0,)"))->viewTemplate.timerInMilliSec, 2500);
}

TEST(CarouselModelTest, SaysWhereAPayloadIsWrong) {
  struct Case {
    std::string json;
    std::string path;
  };
  const Case cases[] = {
      {"{}", "/_rf/vt"},
      {R"({"vt":[]})", "/_rf/vt"},
      {R"({"vt":{"it":[]}})", "/_rf/vt/t"},
      {R"({"vt":{"t":"1","it":[]}})", "/_rf/vt/t"},
      {R"({"vt":{"t":"0"}})", "/_rf/vt/it"},
      {carousel("{}"), "/_rf/vt/it"},
      {carousel("[]", R"("tms":"1",)"), "/_rf/vt/tms"},
      {carousel("[]", R"("tms":0.5,)"), "/_rf/vt/tms"},
      {carousel("[]", R"("s":"E5E5E5",)"), "/_rf/vt/s"},
      {carousel("[]", R"("s":{"bgc":0},)"), "/_rf/vt/s/bgc"},
      {carousel(R"([{"md":{"ul":""}}])"), "/_rf/vt/it/0/id"},
      {carousel(R"([{"id":""}])"), "/_rf/vt/it/0/md"},
      {carousel(R"([{"id":"","md":{"ul":""}},{"id":"","md":{}}])"), "/_rf/vt/it/1/md/ul"},
      {carousel(R"([{"id":"","md":{"ul":"","at":{}}}])"), "/_rf/vt/it/0/md/at/tx"},
      {carousel(R"([{"id":"","md":{"ul":""},"ti":"x"}])"), "/_rf/vt/it/0/ti"},
      {carousel(R"([{"id":"","md":{"ul":""},"ti":{"tx":"","s":{"fz":"XL"}}}])"), "/_rf/vt/it/0/ti/s/fz"},
      {carousel(R"([{"id":"","md":{"ul":""},"sti":{"tx":"","s":{"an":"L"}}}])"), "/_rf/vt/it/0/sti/s/an"},
      {carousel(R"([{"id":"","md":{"ul":""},"sti":{"tx":"","s":{"fs":"b"}}}])"), "/_rf/vt/it/0/sti/s/fs"},
      {carousel(R"([{"id":"","md":{"ul":""},"ac":{}}])"), "/_rf/vt/it/0/ac"},
      {carousel(R"([{"id":"","md":{"ul":""},"ac":[{"t":"0"},{}]}])"), "/_rf/vt/it/0/ac/1/t"},
      {carousel(R"([{"id":"","md":{"ul":""},"ac":[{"t":"4"}]}])"), "/_rf/vt/it/0/ac/0/t"},
      {carousel(R"([{"id":"","md":{"ul":""},"ac":[{"t":"1","ul":7}]}])"), "/_rf/vt/it/0/ac/0/ul"},
  };
  for (const Case& each : cases) {
    const auto model = decode(each.json);
    ASSERT_FALSE(model) << each.json;
    EXPECT_EQ(model.error().path.text(), each.path) << each.json;
    EXPECT_FALSE(model.error().message.empty()) << each.json;
  }
}

TEST(ViewTemplateCheckTest, AnswersOnlyForACarouselAndSaysWhyNot) {
  struct Case {
    std::string userInfo;
    std::string message;
  };
  const Case refused[] = {
      {"{}", "Rich features payload missing"},
      {R"({"_rf":"{\"vt\":{\"t\":\"0\"}}"})", "Rich features payload missing"},
      {R"({"_rf":{}})", "ViewTemplate payload missing"},
      {R"({"_rf":{"vt":"0"}})", "ViewTemplate payload missing"},
      {R"({"_rf":{"vt":{}}})", "ViewTemplate type is not String"},
      {R"({"_rf":{"vt":{"t":0}}})", "ViewTemplate type is not String"},
      {R"({"_rf":{"vt":{"t":"1"}}})", "Invalid view template raw value"},
      {R"({"_rf":{"vt":{"t":""}}})", "Invalid view template raw value"},
  };
  for (const Case& each : refused) {
    support::ScopedLogRecorder log;
    EXPECT_EQ(checkViewTemplate(*requestOf(each.userInfo), Logger::content()), std::nullopt);
    EXPECT_THAT(log->entries(), ElementsAre(support::LogEntry{"ContentExtension", "ContentGeneral",
                                                              QXPlatform::LogType::error, each.message}));
  }
  support::ScopedLogRecorder log;
  EXPECT_EQ(checkViewTemplate(*requestOf(R"({"_rf":{"vt":{"t":"0"}}})"), Logger::content()),
            ViewTemplateType::carousel);
  EXPECT_TRUE(log->entries().empty());
}

TEST(ViewTemplateCheckTest, SpeaksUnderTheCategoryOfItsExtension) {
  support::ScopedLogRecorder log;
  checkViewTemplate({"no content", nullptr}, Logger::service());
  EXPECT_THAT(log->entries(),
              ElementsAre(support::LogEntry{"ServiceExtension", "ServiceGeneral", QXPlatform::LogType::error,
                                            "Rich features payload missing"}));
}

class PayloadCarouselModelParserTest : public testing::Test {
 protected:
  std::optional<CarouselModel> parse(const QXPlatform::UNNotificationRequest& request) const {
    return PayloadCarouselModelParser(Logger::content()).parse(request);
  }

  support::ScopedLogRecorder log_;
};

TEST_F(PayloadCarouselModelParserTest, DecodesWhatTheNotificationCarries) {
  const auto model = parse(*requestOf(R"({"_rf":)" + support::carousel(support::plainPanels(2)) + "}"));
  ASSERT_TRUE(model);
  EXPECT_EQ(model->viewTemplate.items.size(), 2U);
  EXPECT_TRUE(log_->entries().empty());
}

TEST_F(PayloadCarouselModelParserTest, AddsALineToThatOfTheCheck) {
  EXPECT_FALSE(parse(*requestOf(R"({"_rf":"{}"})")));
  EXPECT_THAT(log_->messages(),
              ElementsAre("Rich features payload missing", "Invalid view template type in parser"));
}

TEST_F(PayloadCarouselModelParserTest, KeepsTheDecodersReasonsToItself) {
  EXPECT_FALSE(parse(*requestOf(R"({"_rf":{"vt":{"t":"0"}}})")));
  EXPECT_THAT(log_->messages(), ElementsAre("Json parsing into model failed"));
}

TEST_F(PayloadCarouselModelParserTest, RefusesWhatJSONCannotHold) {
  const auto richFeatures = support::dictionary(support::carousel("[]"));
  EXPECT_FALSE(parse(*support::makeRequest({{"_rf", richFeatures.setting("x", QXPlatform::Date{0})}})));
  EXPECT_THAT(log_->messages(), ElementsAre("Dictionary is not valid json convertible object",
                                            "Payload can't be converted to JSON string"));
}

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
