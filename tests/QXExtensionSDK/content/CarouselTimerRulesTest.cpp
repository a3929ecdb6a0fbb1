#include "QXExtensionSDK/content/CarouselTimerRules.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using Order = CarouselTimerRules::Order;

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
