#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AppGroupSDK/AppGroupSDK.h"
#include "tests/AppGroupSDK/HostBundle.h"

namespace AppGroupSDK {
namespace {

using enum ExtensionModuleName;

CarouselClickModel click(std::int64_t index) {
  return {"m:r", true, index, CarouselActionType::openApp, std::nullopt, "panel"};
}

TEST(ModelStore, KeepsBaseAndModuleScopedRecordsApart) {
  const support::HostBundle host;
  const VTQXCarouselClickModelStore engagement(quorixEngagement, "abc-1");
  const VTQXCarouselClickModelStore messaging(mobileAppMessaging, "abc-1");
  EXPECT_EQ(engagement.saveModelData(click(0)), DataStoreStatus::success);
  EXPECT_EQ(engagement.saveModuleScopedModelData(click(1)), DataStoreStatus::success);
  EXPECT_EQ(messaging.fetchModuleScopedModelData().status(), DataStoreStatus::noData);
  EXPECT_EQ(messaging.saveModuleScopedModelData(click(2)), DataStoreStatus::success);

  EXPECT_EQ(messaging.fetchModelData().value(), click(0));
  EXPECT_EQ(engagement.fetchModuleScopedModelData().value(), click(1));
  EXPECT_EQ(messaging.fetchModuleScopedModelData().value(), click(2));
  EXPECT_EQ(host.files().size(), 3U);
}

TEST(ModelStore, HasNoModuleScopedRecordWithoutAModule) {
  const support::HostBundle host;
  const VTQXCarouselClickModelStore store;
  EXPECT_EQ(store.saveModuleScopedModelData(click(1)), DataStoreStatus::moduleStoreUnavailable);
  const auto fetched = store.fetchModuleScopedModelData();
  EXPECT_EQ(fetched.status(), DataStoreStatus::moduleStoreUnavailable);
  EXPECT_FALSE(fetched.value());
  EXPECT_TRUE(host.files().empty());
}

TEST(ModuleAppMappingStore, ReplacesOrAppendsOneMapping) {
  const support::HostBundle host;
  const VTQXModuleAppMappingStore store;
  const ModuleAppMapping messaging(mobileAppMessaging, "2");
  EXPECT_EQ(store.saveModuleAppMapping({quorixEngagement, "1"}), DataStoreStatus::success);
  EXPECT_EQ(store.saveModuleAppMapping(messaging), DataStoreStatus::success);
  EXPECT_EQ(store.saveModuleAppMapping({quorixEngagement, "3"}), DataStoreStatus::success);
  EXPECT_EQ(store.fetchModelData().value()->mappings(),
            (std::vector{ModuleAppMapping(quorixEngagement, "3"), messaging}));
}

TEST(ModuleAppMappingStore, StartsAfreshOverAFileThatIsNoRecord) {
  const support::HostBundle host;
  host.write(std::string(ModuleAppMappings::dataStoreFileName()), "not a record");
  EXPECT_EQ(VTQXModuleAppMappingStore().saveModuleAppMapping({quorixEngagement, "1"}),
            DataStoreStatus::success);
  EXPECT_EQ(VTQXModuleAppMappingStore().fetchModelData().value()->mappings().size(), 1U);
}

TEST(AppIdProvider, RemembersMappingsOnceThereAreAny) {
  const support::HostBundle host;
  VTQXAppIdProvider provider;
  EXPECT_EQ(provider.appIdForModule(quorixEngagement), std::nullopt);
  EXPECT_EQ(provider.storeAppId("1", quorixEngagement), DataStoreStatus::success);
  EXPECT_EQ(provider.appIdForModule(quorixEngagement), "1") << "no mappings are not remembered";

  EXPECT_EQ(VTQXAppIdProvider().storeAppId("2", quorixEngagement), DataStoreStatus::success);
  EXPECT_EQ(provider.storeAppId("3", mobileAppMessaging), DataStoreStatus::success);
  EXPECT_EQ(provider.appIdForModule(quorixEngagement), "1");
  EXPECT_EQ(provider.appIdForModule(mobileAppMessaging), std::nullopt);
  EXPECT_EQ(VTQXAppIdProvider().appIdForModule(quorixEngagement), "2");
}

}  // namespace
}  // namespace AppGroupSDK
