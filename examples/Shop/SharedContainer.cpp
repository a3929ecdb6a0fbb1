#include "SharedContainer.h"

#include <AppGroupSDK/AppGroupSDK.h>
#include <QXPlatform/files/Container.h>
#include <sys/stat.h>

#include <filesystem>
#include <system_error>

namespace shop {

namespace {

constexpr auto kModule = AppGroupSDK::ExtensionModuleName::quorixEngagement;
constexpr const char* kAppId = "shop";

bool makeContainer() {
  const auto path = QXPlatform::containerPathForGroup("group.com.example.shop");
  if (!path) return false;
  std::error_code error;
  std::filesystem::create_directories(path->parent_path(), error);
  return ::mkdir(path->c_str(), S_IRWXU) == 0 || std::filesystem::is_directory(*path, error);
}

}  // namespace

bool prepareContainer() {
  return makeContainer() && AppGroupSDK::VTQXAppIdProvider().storeAppId(kAppId, kModule) ==
                                AppGroupSDK::DataStoreStatus::success;
}

QString lastClick() {
  const auto result = AppGroupSDK::VTQXCarouselClickModelStore(kModule, kAppId).fetchModuleScopedModelData();
  if (!result.value()) return {};
  const auto& click = *result.value();
  const QString panel = QString("Panel %1").arg(click.clickIndex() + 1);
  return click.actionUrl() ? panel + ": " + QString::fromStdString(*click.actionUrl()) : panel;
}

}  // namespace shop
