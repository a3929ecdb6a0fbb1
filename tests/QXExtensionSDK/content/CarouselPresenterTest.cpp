#include "QXExtensionSDK/content/CarouselPresenter.h"

#include "QXExtensionSDK/content/CarouselTimerRules.h"
#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using Order = CarouselTimerRules::Order;
using support::carousel;

CarouselViewModel present(const std::string& json, std::int64_t index = 0) {
  CarouselPresenter presenter(Logger::content());
  presenter.setCurrentSelectedPanelIndex(index);
  return presenter.viewModel(*PayloadCarouselModelParser::decode(support::dictionary(json)));
}

PanelItemComponent presentPanel(const std::string& members, std::string_view templateMembers = "") {
  return present(carousel("[{\"id\":\"p\"," + members + "}]", templateMembers)).panels->front();
}

TEST(CarouselPresenterTest, FillsInTheDefaultsOfEachSlot) {
  const auto panel =
      presentPanel(R"("md":{"ul":"u","at":{"tx":"a"}},"ti":{"tx":"t"},"sti":{"tx":"s"},"ac":[{"t":"0"}])");
  EXPECT_EQ(panel.media.url, "u");
  EXPECT_EQ(panel.media.backgroundColor, Color(0xE5E5E5));
  EXPECT_EQ(panel.media.altText,
            (TextComponent{"a", {FontStyle::bold, 14}, TextAlignment::center, Color(0x000000)}));
  EXPECT_EQ(panel.title,
            (TextComponent{"t", {FontStyle::bold, 14}, TextAlignment::beginning, Color(0x2E2E2E)}));
  EXPECT_EQ(panel.subTitle,
            (TextComponent{"s", {FontStyle::regular, 12}, TextAlignment::beginning, Color(0x5C5C5C)}));
  EXPECT_EQ(panel.panelColor, Color(0xFFFFFF));
  ASSERT_TRUE(panel.action);
  EXPECT_EQ(panel.action->kind, ActionType::openApp);
}

TEST(CarouselPresenterTest, TakesEachAttributeOfATextByItself) {
  struct Case {
    std::string style;
    TextComponent title;
  };
  const Case cases[] = {
      {R"({"fz":"L"})", {"t", {FontStyle::bold, 16}, TextAlignment::beginning, Color(0x2E2E2E)}},
      {R"({"fz":"S","an":"E"})", {"t", {FontStyle::bold, 12}, TextAlignment::end, Color(0x2E2E2E)}},
      {R"({"fs":"I"})", {"t", {FontStyle::italic, 14}, TextAlignment::beginning, Color(0x2E2E2E)}},
      {R"({"fc":"ff0000"})", {"t", {FontStyle::bold, 14}, TextAlignment::beginning, Color(0xFF0000)}},
      {R"({"fc":"#ff0000"})", {"t", {FontStyle::bold, 14}, TextAlignment::beginning, Color(0x2E2E2E)}},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(presentPanel(R"("md":{"ul":""},"ti":{"tx":"t","s":)" + each.style + "}").title, each.title);
  }
}

TEST(CarouselPresenterTest, LooksForTheMediaBackgroundWithTheMediumThenTheTemplate) {
  struct Case {
    std::string media;
    std::string_view viewTemplate;
    Color color;
  };
  const Case cases[] = {
      {R"("s":{"bgc":"111111"})", R"("s":{"bgc":"222222"},)", Color(0x111111)},
      {R"("s":{"bgc":"bad"})", R"("s":{"bgc":"222222"},)", Color(0xE5E5E5)},
      {R"("s":{})", R"("s":{"bgc":"222222"},)", Color(0x222222)},
      {R"("x":0)", R"("s":{"bgc":"222222"},)", Color(0x222222)},
      {R"("x":0)", R"("s":{"bgc":"bad"},)", Color(0xE5E5E5)},
      {R"("x":0)", R"("s":{},)", Color(0xE5E5E5)},
  };
  for (const Case& each : cases) {
    const auto panel = presentPanel(R"("md":{"ul":"",)" + each.media + "}", each.viewTemplate);
    EXPECT_EQ(panel.media.backgroundColor, each.color) << each.media << each.viewTemplate;
    EXPECT_EQ(panel.panelColor, kWhite);  // the template's colour is not for the panel
  }
  EXPECT_EQ(presentPanel(R"("md":{"ul":""},"s":{"bgc":"123456"})").panelColor, Color(0x123456));
}

TEST(CarouselPresenterTest, GivesEveryPanelTheSameRoomForTexts) {
  const std::string media = R"("id":"","md":{"ul":""})";
  const std::string title = R"(,"ti":{"tx":"t"})";
  const std::string subTitle = R"(,"sti":{"tx":"s"})";
  const auto textStates = [&](const std::string& first, const std::string& second) {
    std::vector<ViewTextState> states;
    const auto viewModel = present(carousel("[{" + media + first + "},{" + media + second + "}]"));
    for (const auto& panel : *viewModel.panels) states.push_back(panel.textState);
    return states;
  };
  const auto twice = [](ViewTextState state) { return std::vector{state, state}; };
  EXPECT_EQ(textStates("", ""), twice(ViewTextState::none));
  EXPECT_EQ(textStates("", title), twice(ViewTextState::onlyTitle));
  EXPECT_EQ(textStates(subTitle, ""), twice(ViewTextState::onlySubtitle));
  EXPECT_EQ(textStates(title, subTitle), twice(ViewTextState::both));
}

TEST(CarouselPresenterTest, StandsAtTheSelectedPanel) {
  const auto viewModel = present(carousel(support::plainPanels(3), R"("tms":2500,)"), 1);
  EXPECT_EQ(viewModel.currentPanelIndex, 1);
  EXPECT_EQ(viewModel.navigationState, (ViewTemplateNavigationState{true, true, true, std::nullopt}));
  EXPECT_TRUE(viewModel.hasValidTimer);
  EXPECT_EQ(viewModel.timerInMilliSec, 2500);

  const auto empty = present(carousel("[]"));
  ASSERT_NE(empty.panels, nullptr);
  EXPECT_TRUE(empty.panels->empty());
  EXPECT_EQ(empty.navigationState, ViewTemplateNavigationState());
}

TEST(CarouselPresenterTest, HasATimerFromOneMillisecondOn) {
  for (const auto& [timer, valid] : {std::pair{"-1", false}, {"0", false}, {"1", true}}) {
    const auto viewModel = present(carousel("[]", "\"tms\":" + std::string(timer) + ","));
    EXPECT_EQ(viewModel.hasValidTimer, valid);
    EXPECT_EQ(viewModel.timerInMilliSec, std::stoi(timer));
  }
  EXPECT_FALSE(present(carousel("[]")).hasValidTimer);
}

TEST(CarouselPresenterTest, LogsWhatItCannotGiveOncePerPlace) {
  support::ScopedLogRecorder log;
  presentPanel(
      R"("md":{"ul":"","s":{"bgc":"1"},"at":{"tx":"","s":{"fc":"2"}}},"ti":{"tx":"","s":{"fc":"3"}},)"
      R"("sti":{"tx":"","s":{"fc":"4"}},"s":{"bgc":"5"})");
  EXPECT_THAT(log->messages(), testing::ElementsAre("Invalid color value=1", "Invalid color value=2",
                                                    "Invalid color value=3", "Invalid color value=4",
                                                    "Actions array is missing", "Invalid color value=5"));
}

CarouselViewModel viewModelAt(std::int64_t index, std::size_t panelCount, std::int64_t timer) {
  const PanelItemComponent panel{.media = {.url = "", .backgroundColor = kWhite, .altText = {}},
                                 .title = {},
                                 .subTitle = {},
                                 .action = std::nullopt,
                                 .panelColor = kWhite,
                                 .textState = ViewTextState::none};
  return {.hasValidTimer = timer >= 1,
          .timerInMilliSec = timer,
          .navigationState = {},
          .currentPanelIndex = index,
          .panels = std::make_shared<const PanelItemComponents>(panelCount, panel)};
}

TEST(CarouselTimerRulesTest, RunsOnceThroughThePanelsAndRestsOnTheLast) {
  CarouselTimerRules rules;
  EXPECT_EQ(rules.state(), TimerState::notStarted);
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(0, 3, 1000)), Order::start);
  EXPECT_EQ(rules.state(), TimerState::running);
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(1, 3, 1000)), Order::none);
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(2, 3, 1000)), Order::stop);
  EXPECT_EQ(rules.state(), TimerState::stopped);
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(1, 3, 1000)), Order::none);
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(0, 9, 5)), Order::none);
  EXPECT_EQ(rules.state(), TimerState::stopped);
}

TEST(CarouselTimerRulesTest, WaitsForTheFirstValidTimer) {
  CarouselTimerRules rules;
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(0, 2, 0)), Order::none);
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(1, 2, -1)), Order::none);
  EXPECT_EQ(rules.state(), TimerState::notStarted);
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(0, 2, 1)), Order::start);
}

TEST(CarouselTimerRulesTest, GivesOneOrderAtATimeSoASinglePanelStopsAtItsNextApplication) {
  CarouselTimerRules rules;
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(0, 1, 1000)), Order::start);
  EXPECT_EQ(rules.viewModelApplied(viewModelAt(0, 1, 1000)), Order::stop);
}

TEST(NavigationStateTest, LeadsOnlyToPanelsThatAre) {
  struct Case {
    std::size_t panelCount;
    std::int64_t index;
    bool shown;
    bool back;
    bool next;
  };
  const Case cases[] = {{0, 0, false, false, false}, {1, 0, false, false, false}, {2, 0, true, false, true},
                        {2, 1, true, true, false},   {3, 1, true, true, true},    {1, 4, false, false, false},
                        {2, 4, true, true, false}};
  for (const Case& each : cases) {
    EXPECT_EQ(
        makeNavigationState(each.panelCount, each.index, NavigationButtonClickState::back),
        (ViewTemplateNavigationState{each.shown, each.back, each.next, NavigationButtonClickState::back}))
        << each.panelCount << " panels at " << each.index;
  }
}

}  // namespace
}  // namespace QXExtensionSDK
