#include "QXExtensionSDK/content/CarouselClick.h"

#include <string_view>
#include <utility>

namespace QXExtensionSDK {

namespace {

bool isWhatItDeclares(const UserAction& action) {
  switch (action.kind()) {
    case ActionType::openApp:
      return true;
    case ActionType::openDeepLink:
      return dynamic_cast<const OpenDeeplinkUserAction*>(&action) != nullptr;
    case ActionType::openWebUrl:
      return dynamic_cast<const OpenWebUrlUserAction*>(&action) != nullptr;
    case ActionType::openCloudPage:
      return dynamic_cast<const OpenCloudPageUserAction*>(&action) != nullptr;
  }
  return false;
}

constexpr std::string_view linkName(ActionType linkKind) {
  if (linkKind == ActionType::openDeepLink) return "OpenDeepLink";
  return linkKind == ActionType::openWebUrl ? "OpenWebUrl" : "OpenCloudPage";
}

}  // namespace

std::optional<AppGroupSDK::CarouselClickModel> makeCarouselClick(const std::string& notificationUniqueId,
                                                                 std::int64_t index,
                                                                 const std::string& panelId,
                                                                 const UserAction& action,
                                                                 const Logger& logger) {
  const ActionType kind = action.kind();
  if (!isWhatItDeclares(action)) {
    logger.error(LogCategory::contentGeneral, "Invalid User Action Type: ", linkName(kind));
    return std::nullopt;
  }
  std::optional<std::string> url;
  if (kind != ActionType::openApp) url = action.url()->absoluteString();
  return AppGroupSDK::CarouselClickModel(notificationUniqueId, true, index,
                                         static_cast<AppGroupSDK::CarouselActionType>(kind), std::move(url),
                                         panelId);
}

}  // namespace QXExtensionSDK
