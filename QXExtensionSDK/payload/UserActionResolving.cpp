#include "QXExtensionSDK/payload/UserActionResolving.h"

#include <string_view>

namespace QXExtensionSDK {

namespace {

constexpr std::string_view name(ActionType linkKind) {
  if (linkKind == ActionType::openDeepLink) return "openDeepLink";
  return linkKind == ActionType::openWebUrl ? "openWebUrl" : "openCloudPage";
}

std::optional<UserAction> resolve(const OpenAppAction&, const Logger&) {
  return UserAction{};
}

template <ActionType kType>
std::optional<UserAction> resolve(const LinkAction<kType>& action, const Logger& logger) {
  auto url = action.url ? QXPlatform::URL::parse(*action.url) : std::nullopt;
  if (url) return UserAction{kType, std::move(url)};
  logger.error(logger.generalCategory(), "Invalid action state for ", name(kType));
  return std::nullopt;
}

}  // namespace

std::optional<UserAction> resolveUserAction(const std::optional<std::vector<ActionSerDeWrapper>>& actions,
                                            const Logger& logger) {
  if (!actions || actions->empty()) {
    logger.error(logger.generalCategory(), "Actions array is ", actions ? "empty" : "missing");
    return std::nullopt;
  }
  return std::visit([&](const auto& record) { return resolve(record, logger); }, actions->front().action);
}

}  // namespace QXExtensionSDK
