#include "QXExtensionSDK/payload/CarouselModel.h"

#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using support::carousel;

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

}  // namespace
}  // namespace QXExtensionSDK
