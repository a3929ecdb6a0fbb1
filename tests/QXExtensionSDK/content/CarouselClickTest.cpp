#include "QXExtensionSDK/content/CarouselClick.h"

#include "AppGroupSDK/context/PNContextUtils.h"
#include "QXExtensionSDK/content/CarouselClickStoring.h"
#include "tests/AppGroupSDK/HostBundle.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using AppGroupSDK::CarouselActionType;
using AppGroupSDK::ExtensionModuleName;
using testing::ElementsAre;

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
