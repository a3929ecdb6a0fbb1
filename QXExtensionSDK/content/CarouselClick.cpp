#include "QXExtensionSDK/content/CarouselClick.h"

#include <string_view>
#include <utility>

namespace QXExtensionSDK {

namespace {

// A click is stored under the number of the action's kind.
static_assert(static_cast<int>(ActionType::openApp) ==
              static_cast<int>(AppGroupSDK::CarouselActionType::openApp));
static_assert(static_cast<int>(ActionType::openDeepLink) ==
              static_cast<int>(AppGroupSDK::CarouselActionType::openDeepLink));
static_assert(static_cast<int>(ActionType::openWebUrl) ==
              static_cast<int>(AppGroupSDK::CarouselActionType::openWebUrl));
static_assert(static_cast<int>(ActionType::openCloudPage) ==
              static_cast<int>(AppGroupSDK::CarouselActionType::openCloudPage));

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
  if (action.kind != ActionType::openApp && !action.url) {
    logger.error(LogCategory::contentGeneral, "Invalid User Action Type: ", linkName(action.kind));
    return std::nullopt;
  }
  auto url = action.url ? std::optional(action.url->absoluteString()) : std::nullopt;
  return AppGroupSDK::CarouselClickModel(notificationUniqueId, true, index,
                                         static_cast<AppGroupSDK::CarouselActionType>(action.kind),
                                         std::move(url), panelId);
}

}  // namespace QXExtensionSDK
