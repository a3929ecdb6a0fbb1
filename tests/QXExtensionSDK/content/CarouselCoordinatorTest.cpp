#include "QXExtensionSDK/content/CarouselCoordinator.h"

#include "AppGroupSDK/context/PNContextUtils.h"
#include "QXExtensionSDK/content/CarouselClick.h"
#include "QXExtensionSDK/content/CarouselClickStoring.h"
#include "QXPlatform/notifications/UNUserNotificationCenter.h"
#include "tests/AppGroupSDK/HostBundle.h"
#include "tests/QXExtensionSDK/content/FakeCarouselScreen.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using AppGroupSDK::CarouselActionType;
using AppGroupSDK::ExtensionModuleName;
using QXPlatform::UNUserNotificationCenter;
using support::carousel;
using support::plainPanels;
using testing::ElementsAre;
using testing::IsEmpty;

// Keeps clicks in memory; a module may have no storage, or one that cannot write.
class ClickBook final : public CarouselClickStorageCreating {
 public:
  struct Entry {
    ExtensionModuleName module;
    AppGroupSDK::CarouselClickModel click;
  };

  std::unique_ptr<CarouselClickStoring> createStorage(ExtensionModuleName module,
                                                      const AppGroupSDK::PNContextInfo&) override {
    if (module == missing) return nullptr;
    return std::make_unique<Storage>(*this, module);
  }

  std::vector<Entry> entries;
  std::optional<ExtensionModuleName> missing;
  bool writable = true;

 private:
  class Storage final : public CarouselClickStoring {
   public:
    Storage(ClickBook& book, ExtensionModuleName module) : book_(book), module_(module) {}
    bool save(const AppGroupSDK::CarouselClickModel& click) const override {
      if (book_.writable) book_.entries.push_back({module_, click});
      return book_.writable;
    }

   private:
    ClickBook& book_;
    ExtensionModuleName module_;
  };
};

class CarouselCoordinatorTest : public testing::Test {
 protected:
  CarouselCoordinatorTest() {
    auto clicks = std::make_unique<ClickBook>();
    clicks_ = clicks.get();
    coordinator_ = std::make_shared<CarouselCoordinator>(
        Logger::content(),
        CarouselCollaborators{
            .parser = std::make_unique<PayloadCarouselModelParser>(Logger::content()),
            .presenter = std::make_unique<CarouselPresenter>(Logger::content()),
            .clickStorageFactory = std::move(clicks),
            .makeScreen = [this] { return screen_ = std::make_shared<FakeCarouselScreen>(); },
            .dispatchMain = [this](std::function<void()> work) { mainQueue_.push_back(std::move(work)); },
            .dispatchSaving =
                [this](std::function<void()> work) { savingQueue_.push_back(std::move(work)); }});
  }

  static std::shared_ptr<const QXPlatform::UNNotificationRequest> pushOf(const std::string& richFeatures,
                                                                         std::string identifier = "request") {
    return support::makeRequest(
        support::dictionary(R"({"_sid":"VTQX","_m":"m","_r":"r","_rf":)" + richFeatures + "}"),
        std::move(identifier));
  }
  void start(const std::string& richFeatures) {
    coordinator_->startWith(pushOf(richFeatures));
    screen_->context = &context_;
    log_.emplace();
  }
  // Saves the click as well.
  void tap() {
    coordinator_->panelTapped();
    for (const auto& work : std::exchange(savingQueue_, {})) work();
  }
  void runMainQueue() {
    for (const auto& work : std::exchange(mainQueue_, {})) work();
  }
  // The lines since start().
  std::vector<std::string> messages() const { return (*log_)->messages(); }

  RecordingExtensionContext context_;
  std::shared_ptr<FakeCarouselScreen> screen_;
  ClickBook* clicks_ = nullptr;
  std::vector<std::function<void()>> mainQueue_;
  std::vector<std::function<void()>> savingQueue_;
  std::shared_ptr<CarouselCoordinator> coordinator_;
  std::optional<support::ScopedLogRecorder> log_;
};

TEST_F(CarouselCoordinatorTest, MovesBetweenTheFirstPanelAndTheLast) {
  start(carousel(plainPanels(3), R"("tms":9,)"));
  const auto panels = screen_->applied.panels;
  EXPECT_EQ(screen_->delegate.lock(), coordinator_);
  EXPECT_EQ(screen_->applyCount, 1);

  coordinator_->backButtonTapped();
  EXPECT_EQ(screen_->applyCount, 1);  // nothing to redraw
  coordinator_->nextButtonTapped();
  EXPECT_EQ(screen_->applied.currentPanelIndex, 1);
  EXPECT_EQ(screen_->applied.navigationState,
            (ViewTemplateNavigationState{true, true, true, NavigationButtonClickState::next}));
  coordinator_->nextButtonTapped();
  coordinator_->nextButtonTapped();
  EXPECT_EQ(screen_->applied.currentPanelIndex, 2);
  EXPECT_EQ(screen_->applyCount, 3);
  coordinator_->backButtonTapped();
  EXPECT_EQ(screen_->applied.navigationState,
            (ViewTemplateNavigationState{true, true, true, NavigationButtonClickState::back}));
  EXPECT_EQ(screen_->applied.timerInMilliSec, 9);
  EXPECT_EQ(screen_->applied.panels, panels);  // shared, not copied
}

TEST_F(CarouselCoordinatorTest, KeepsTheSelectedPanelThroughARefresh) {
  start(carousel(plainPanels(3)));
  coordinator_->nextButtonTapped();
  coordinator_->nextButtonTapped();
  const auto screen = screen_;
  coordinator_->refreshWith(pushOf(carousel(plainPanels(2))));
  EXPECT_EQ(screen_, screen);
  EXPECT_EQ(screen_->applied.currentPanelIndex, 2);  // beyond the panels: for the screen to refuse
  EXPECT_EQ(screen_->applied.navigationState, (ViewTemplateNavigationState{true, true, false, std::nullopt}));
  coordinator_->nextButtonTapped();
  EXPECT_EQ(screen_->applyCount, 4);
  coordinator_->panelTapped();
  EXPECT_EQ(messages().back(), "Invalid View Model panel data");
  coordinator_->backButtonTapped();
  EXPECT_EQ(screen_->applied.currentPanelIndex, 1);
}

TEST_F(CarouselCoordinatorTest, CollapsesOnWhatItCannotShowAndRecoversWithTheNextNotification) {
  start(carousel(plainPanels(2)));
  coordinator_->refreshWith(pushOf(R"({"vt":{"t":"0"}})"));
  EXPECT_TRUE(screen_->collapsed);
  EXPECT_THAT(messages(),
              ElementsAre("Json parsing into model failed", "Parsing returned a nil model object"));

  // The panels of the notification before are no longer there to be used.
  log_.emplace();
  coordinator_->panelTapped();
  coordinator_->nextButtonTapped();
  EXPECT_THAT(messages(), ElementsAre("Invalid Model items data", "Backing out as model is nil"));
  EXPECT_TRUE(screen_->collapsed);

  log_.emplace();
  coordinator_->refreshWith(nullptr);
  EXPECT_THAT(messages(), ElementsAre("Not proceeding with parsing as notification request object is nil"));

  coordinator_->refreshWith(pushOf(carousel(plainPanels(2))));
  EXPECT_FALSE(screen_->collapsed);
  EXPECT_EQ(screen_->applied.currentPanelIndex, 0);
}

TEST_F(CarouselCoordinatorTest, RecordsATapThenOpensTheAppAndTakesTheNotificationAway) {
  auto& center = UNUserNotificationCenter::current();
  center.addDeliveredNotification(support::makeRequest({}, "request"));
  center.addDeliveredNotification(support::makeRequest({}, "other"));
  start(carousel(
      R"([{"id":"p0","md":{"ul":""}},{"id":"p1","md":{"ul":""},"ac":[{"t":"2","ul":"https://x/y"}]}])"));
  coordinator_->nextButtonTapped();
  Logger::setGlobalLoglevel(0);
  coordinator_->panelTapped();
  EXPECT_THAT(clicks_->entries, IsEmpty());  // the main thread waits for no container
  EXPECT_THAT(mainQueue_, IsEmpty());
  savingQueue_.front()();
  Logger::setGlobalLoglevel(2);

  const AppGroupSDK::CarouselClickModel click("m:r", true, 1, AppGroupSDK::CarouselActionType::openWebUrl,
                                              "https://x/y", "p1");
  ASSERT_EQ(clicks_->entries.size(), 2U);
  EXPECT_EQ(clicks_->entries[0].module, ExtensionModuleName::quorixEngagement);
  EXPECT_EQ(clicks_->entries[1].module, ExtensionModuleName::mobileAppMessaging);
  for (const auto& entry : clicks_->entries) EXPECT_EQ(entry.click, click);
  EXPECT_THAT(messages(), ElementsAre("Click state save status=true for QXE module",
                                      "Click state save status=true for MAM module"));

  EXPECT_EQ(context_.defaultActionCount, 0);  // only when the main thread comes to it
  runMainQueue();
  EXPECT_EQ(context_.defaultActionCount, 1);
  ASSERT_EQ(center.deliveredNotifications().size(), 1U);
  EXPECT_EQ(center.deliveredNotifications()[0]->identifier, "other");
}

TEST_F(CarouselCoordinatorTest, OpensTheAppWhetherOrNotTheClickCouldBeSaved) {
  start(carousel(R"([{"id":"p","md":{"ul":""},"ac":[{"t":"0"}]}])"));
  clicks_->writable = false;
  clicks_->missing = ExtensionModuleName::quorixEngagement;
  Logger::setGlobalLoglevel(0);
  tap();
  Logger::setGlobalLoglevel(2);
  runMainQueue();
  EXPECT_THAT(messages(), ElementsAre("Click state save status=false for MAM module"));
  EXPECT_EQ(context_.defaultActionCount, 1);

  // A panel without an action has nothing to save.
  coordinator_->refreshWith(pushOf(carousel(plainPanels(1))));
  clicks_->writable = true;
  tap();
  runMainQueue();
  EXPECT_THAT(clicks_->entries, IsEmpty());
  EXPECT_EQ(context_.defaultActionCount, 2);
}

TEST_F(CarouselCoordinatorTest, NeitherSavesNorOpensWithoutAUniqueId) {
  start(carousel("[]"));
  coordinator_->refreshWith(support::requestOf(
      R"({"_m":7,"_rf":)" + carousel(R"([{"id":"p","md":{"ul":""},"ac":[{"t":"0"}]}])") + "}"));
  log_.emplace();
  tap();
  EXPECT_THAT(messages(),
              ElementsAre("Backing out from saving carousel click data in App Group as unique id is nil"));
  EXPECT_THAT(clicks_->entries, IsEmpty());
  EXPECT_THAT(mainQueue_, IsEmpty());
}

TEST_F(CarouselCoordinatorTest, SaysWhatKeepsATapFromItsEnd) {
  start(carousel(plainPanels(1)));
  screen_->context = nullptr;
  tap();
  runMainQueue();
  EXPECT_THAT(messages(), ElementsAre("Extension context not found"));

  log_.emplace();
  screen_->context = &context_;
  coordinator_->refreshWith(pushOf(carousel(R"([{"id":"","md":{"ul":""},"ac":[{"t":"0"}]}])"), ""));
  tap();
  runMainQueue();
  EXPECT_EQ(context_.defaultActionCount, 1);
  EXPECT_THAT(messages(), ElementsAre("Delivered notification can't be removed"));
}

TEST_F(CarouselCoordinatorTest, LeavesNothingBehindWhenItIsClosedBetweenTapAndDefaultAction) {
  start(carousel(plainPanels(1)));
  tap();
  coordinator_.reset();
  const std::weak_ptr<FakeCarouselScreen> screen = screen_;
  screen_.reset();
  EXPECT_TRUE(screen.expired());
  runMainQueue();
  EXPECT_EQ(context_.defaultActionCount, 0);
}

TEST(CarouselClickTest, HoldsTheActionAsNumberAndTarget) {
  const auto url = *QXPlatform::URL::parse("app://x?y");
  struct Case {
    UserAction action;
    CarouselActionType type;
    std::optional<std::string> url;
  };
  const Case cases[] = {
      {{ActionType::openApp, std::nullopt}, CarouselActionType::openApp, std::nullopt},
      {{ActionType::openDeepLink, url}, CarouselActionType::openDeepLink, "app://x?y"},
      {{ActionType::openWebUrl, url}, CarouselActionType::openWebUrl, "app://x?y"},
      {{ActionType::openCloudPage, url}, CarouselActionType::openCloudPage, "app://x?y"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(makeCarouselClick("m:r", 2, "p", each.action, Logger::content()),
              AppGroupSDK::CarouselClickModel("m:r", true, 2, each.type, each.url, "p"));
  }
}

TEST(CarouselClickTest, RefusesALinkWithoutATarget) {
  support::ScopedLogRecorder log;
  for (const ActionType kind :
       {ActionType::openDeepLink, ActionType::openWebUrl, ActionType::openCloudPage}) {
    EXPECT_EQ(makeCarouselClick("m:r", 0, "p", {kind, std::nullopt}, Logger::content()), std::nullopt);
  }
  EXPECT_THAT(log->messages(),
              ElementsAre("Invalid User Action Type: OpenDeepLink", "Invalid User Action Type: OpenWebUrl",
                          "Invalid User Action Type: OpenCloudPage"));
}

class CarouselClickStorageFactoryTest : public testing::Test {
 protected:
  support::HostBundle host_;
  support::ScopedLogRecorder log_;
  CarouselClickStorageFactory factory_{Logger::content()};
  const AppGroupSDK::PNContextInfo engagement_{AppGroupSDK::PNContextSource::sourceOne, {1}, std::nullopt};
};

TEST_F(CarouselClickStorageFactoryTest, KeepsTheClickInTheRecordOfTheModule) {
  const auto module = ExtensionModuleName::quorixEngagement;
  AppGroupSDK::AppIdProvider().storeAppId("app", module);
  const auto storage = factory_.createStorage(module, engagement_);
  ASSERT_NE(storage, nullptr);
  const AppGroupSDK::CarouselClickModel click("m:r", true, 0, CarouselActionType::openApp, std::nullopt, "p");
  EXPECT_TRUE(storage->save(click));
  EXPECT_EQ(AppGroupSDK::CarouselClickModelStore(module, "app").fetchModuleScopedModelData().value(), click);
  EXPECT_EQ(AppGroupSDK::CarouselClickModelStore().fetchModelData().value(), std::nullopt);
}

TEST_F(CarouselClickStorageFactoryTest, SaysWhyAModuleHasNoStorage) {
  EXPECT_EQ(factory_.createStorage(ExtensionModuleName::mobileAppMessaging, engagement_), nullptr);
  EXPECT_EQ(factory_.createStorage(ExtensionModuleName::quorixEngagement, engagement_), nullptr);
  EXPECT_THAT(
      log_->messages(),
      ElementsAre("PN destination doesn't contain module: mobileAppMessaging",
                  "CarouselClickStorage creation failed: module: mobileAppMessaging not found in context: " +
                      engagement_.description(),
                  "CarouselClickStorage creation failed: appId for module: quorixEngagement not available"));
}

}  // namespace
}  // namespace QXExtensionSDK
