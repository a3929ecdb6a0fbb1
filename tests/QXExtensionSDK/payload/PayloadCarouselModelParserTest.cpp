#include "AppGroupSDK/context/PNContextUtils.h"
#include "AppGroupSDK/records/CarouselRichFeatureMetaUtils.h"
#include "QXExtensionSDK/content/CarouselPresenter.h"
#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/payload/ViewTemplateCheck.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using testing::ElementsAre;

std::shared_ptr<const QXPlatform::UNNotificationRequest> requestOf(const std::string& json) {
  return support::makeRequest(support::dictionary(json));
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

// The first JSON example of the guide for those who write payloads.
std::string pushOfTheGuide() {
  std::ifstream file(QX_DOCS "/payload.md", std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string fence = "```json\n";
  const std::size_t begin = text.find(fence) + fence.size();
  return text.substr(begin, text.find("```", begin) - begin);
}

TEST(PayloadGuideTest, ShowsAPushThatWorksInEveryPart) {
  support::ScopedLogRecorder log;
  const auto userInfo = support::dictionary(pushOfTheGuide());
  EXPECT_TRUE(VTQXUtility::isVTQXPush(userInfo));
  EXPECT_EQ(AppGroupSDK::CarouselRichFeatureMetaUtils::getUniqueNotificationIdFrom(userInfo),
            "message-17:request-4");
  EXPECT_EQ(AppGroupSDK::PNContextUtils::parseContextInfoFromUserInfo(userInfo).businessUnitId(), "BU-7");

  const auto model = PayloadCarouselModelParser(Logger::content()).parse(*support::makeRequest(userInfo));
  ASSERT_TRUE(model);
  const auto viewModel = CarouselPresenter(Logger::content()).viewModel(*model);
  EXPECT_TRUE(viewModel.hasValidTimer);
  ASSERT_EQ(viewModel.panels->size(), 2U);
  for (const auto& panel : *viewModel.panels) EXPECT_TRUE(panel.action);
  EXPECT_TRUE(log->entries().empty());
}

}  // namespace
}  // namespace QXExtensionSDK
