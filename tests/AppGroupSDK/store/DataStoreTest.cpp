#include "AppGroupSDK/records/DeliveryReceiptsModelStore.h"

#include "AppGroupSDK/AppGroupSDK.h"
#include "AppGroupSDK/records/FeatureConfigDetailStore.h"
#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"
#include "AppGroupSDK/store/DataStoreFileCoordinatorSaver.h"
#include "QXPlatform/files/FileContents.h"
#include "tests/AppGroupSDK/HostBundle.h"

namespace AppGroupSDK {
namespace {

using enum ExtensionModuleName;
using QXPlatform::URL;

const FeatureConfigDetail kEnabled{DeliveryReceiptConfig(FeatureFlagStatus::enabled)};
constexpr const char* kFile = "com.veltro.qx.extensionsdk.featureConfigDetail.data";

class FixedDirectory final : public DataStoreDirectoryProviding {
 public:
  explicit FixedDirectory(std::optional<URL> url) : url_(std::move(url)) {}
  std::optional<URL> containerURL() const override { return url_; }

 private:
  std::optional<URL> url_;
};

AppGroupDataStore makeStore(std::optional<URL> container) {
  return {std::make_unique<FixedDirectory>(std::move(container)),
          std::make_unique<DataStoreFileCoordinatorSaver>()};
}

TEST(DataStore, SaysWhyThereIsNoContainer) {
  const auto missing = makeStore(std::nullopt);
  EXPECT_EQ(missing.save(kEnabled), DataStoreStatus::containerUnavailable);
  EXPECT_EQ(missing.fetch<FeatureConfigDetail>().status(), DataStoreStatus::containerUnavailable);

  const auto remote = makeStore(URL::parse("https://example.com/container"));
  EXPECT_EQ(remote.save(kEnabled), DataStoreStatus::containerNotFileURL);
  EXPECT_EQ(remote.fetch<FeatureConfigDetail>().status(), DataStoreStatus::containerNotFileURL);
}

TEST(DataStore, KeepsOneRecordPerFile) {
  const support::HostBundle host;
  const AppGroupDataStore store;
  EXPECT_EQ(store.fetch<FeatureConfigDetail>().status(), DataStoreStatus::noData);
  EXPECT_EQ(store.save(FeatureConfigDetail(DeliveryReceiptConfig(FeatureFlagStatus::disabled))),
            DataStoreStatus::success);
  EXPECT_EQ(store.save(kEnabled), DataStoreStatus::success);

  const auto fetched = store.fetch<FeatureConfigDetail>();
  EXPECT_EQ(fetched.status(), DataStoreStatus::success);
  EXPECT_EQ(fetched.value(), kEnabled);
  EXPECT_EQ(host.files(), std::vector<std::string>{kFile});
}

TEST(DataStore, LeavesForeignFilesAlone) {
  const support::HostBundle host;
  const AppGroupDataStore store;
  for (const auto* content : {"", "{}", "[]", "{\"deliveryReceiptConfig\":", "\x7f\x45LF",
                              "{\"deliveryReceiptConfig\":{\"featureFlag\":2}}"}) {
    host.write(kFile, content);
    const auto fetched = store.fetch<FeatureConfigDetail>();
    EXPECT_EQ(fetched.status(), DataStoreStatus::decodingFailed) << content;
    EXPECT_FALSE(fetched.value());
    EXPECT_EQ(DataStoreFileCoordinatorSaver().read(URL::file(host.file(kFile)))->view(), content);
  }
}

TEST(DataStore, WritesNothingThatIsNotJSON) {
  const support::HostBundle host;
  const DeliveryReceiptPNModel undated("u", "m", std::nullopt, "t", std::numeric_limits<double>::quiet_NaN(),
                                       std::nullopt, PNStatus::pending);
  EXPECT_EQ(AppGroupDataStore().save(DeliveryReceiptsModel({undated})), DataStoreStatus::encodingFailed);
  EXPECT_TRUE(host.files().empty());
}

TEST(ModuleDataStore, NamesFilesByTrimmedModuleAndApplicationId) {
  constexpr const char* kBase = "com.veltro.qx.extensionsdk.featureConfigDetail.";
  const std::pair<const char*, const char*> cases[] = {
      {"abc-1", "quorixEngagement.abc-1.data"},
      {" \t\r\n abc-1\xE3\x80\x80\xC2\xA0\n", "quorixEngagement.abc-1.data"},
      {"a b", "quorixEngagement.a b.data"},
      {"", "quorixEngagement..data"},
      {"\n", "quorixEngagement..data"},
      {"50%?#", "quorixEngagement.50%?#.data"},
      {"x.data", "quorixEngagement.x.data.data"},
  };
  for (const auto& [appId, name] : cases) {
    const support::HostBundle host;
    const AppGroupModuleDataStore store(" quorixEngagement\n", appId);
    EXPECT_EQ(store.save(kEnabled), DataStoreStatus::success) << appId;
    EXPECT_EQ(store.fetch<FeatureConfigDetail>().value(), kEnabled);
    EXPECT_EQ(host.files(), std::vector<std::string>{std::string(kBase) + name});
  }
}

TEST(ModuleDataStore, NeverWritesOutsideTheContainer) {
  for (const std::string& appId :
       {std::string("/../../x"), std::string("a/b"), std::string("a\0b", 3), std::string(250, 'a')}) {
    const support::HostBundle host;
    const AppGroupModuleDataStore store("quorixEngagement", appId);
    EXPECT_EQ(store.save(kEnabled), DataStoreStatus::writeFailed) << appId;
    EXPECT_EQ(store.fetch<FeatureConfigDetail>().status(), DataStoreStatus::noData);
    EXPECT_TRUE(host.files().empty());
  }
}

// The system grants every lock that a test can ask for, so a refusal has to be played.
class RefusingCoordinator final : public QXPlatform::FileCoordinator {
 public:
  Outcome coordinateWritingForReplacing(const URL&, const WritingAccessor&,
                                        QXPlatform::FileVersion*) const override {
    return Outcome::calledOff;
  }
  void coordinateReading(const URL&, const ReadingAccessor&) const override {}
};

TEST(FileCoordinatorSaver, WritesNothingThatItCouldNotRead) {
  const support::HostBundle host;
  const auto file = URL::file(host.file("record"));
  const std::string largest(QXPlatform::kMaxFileContents, 'x');
  EXPECT_TRUE(DataStoreFileCoordinatorSaver().write(largest, file));
  EXPECT_FALSE(DataStoreFileCoordinatorSaver().write(largest + "y", file));
  EXPECT_EQ(DataStoreFileCoordinatorSaver().read(file)->size(), largest.size());
}

TEST(FileCoordinatorSaver, CountsAWriteThatIsCalledOffAsWritten) {
  const support::HostBundle host;
  const AppGroupDataStore store(
      std::make_unique<AppGroupDirectoryProvider>(),
      std::make_unique<DataStoreFileCoordinatorSaver>(std::make_unique<RefusingCoordinator>()));
  EXPECT_EQ(store.save(kEnabled), DataStoreStatus::success);
  EXPECT_EQ(store.fetch<FeatureConfigDetail>().status(), DataStoreStatus::noData);
  EXPECT_TRUE(host.files().empty());
}

// The bundle is read once, so each of these runs in a process of its own.
void exitWithStatusUnder(const std::string& plistEntries) {
  const support::HostBundle host(plistEntries);
  const AppGroupDataStore store;
  const auto status = store.save(kEnabled);
  const bool consistent = store.fetch<FeatureConfigDetail>().status() == status && host.files().empty();
  std::exit(consistent ? static_cast<int>(status) : 100);
}

TEST(AppGroupDirectoryDeathTest, NeedsABundleThatNamesAnExistingContainer) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const auto* entries : {"", "<key>VT_QUORIX_APP_GROUP_KEY</key><integer>7</integer>",
                              "<key>VT_QUORIX_APP_GROUP_KEY</key><string>group.missing</string>",
                              "<key>VT_QUORIX_APP_GROUP_KEY</key><string>../tmp</string>"}) {
    EXPECT_EXIT(exitWithStatusUnder(entries),
                testing::ExitedWithCode(static_cast<int>(DataStoreStatus::containerUnavailable)), "")
        << entries;
  }
}

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
