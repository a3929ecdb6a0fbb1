#include "QXExtensionSDK/payload/UserActionResolving.h"

#include <string_view>
#include <utility>

namespace QXExtensionSDK {

namespace {

using ResolvedAction = std::shared_ptr<const UserAction>;

constexpr std::string_view name(ActionType linkKind) {
  if (linkKind == ActionType::openDeepLink) return "openDeepLink";
  return linkKind == ActionType::openWebUrl ? "openWebUrl" : "openCloudPage";
}

ResolvedAction resolve(const OpenAppAction&, const Logger&) {
  return std::make_shared<OpenAppUserAction>();
}

template <ActionType kType>
ResolvedAction resolve(const LinkAction<kType>& action, const Logger& logger) {
  auto url = action.url ? QXPlatform::URL::parse(*action.url) : std::nullopt;
  if (url) return std::make_shared<LinkUserAction<kType>>(*std::move(url));
  logger.error(logger.generalCategory(), "Invalid action state for ", name(kType));
  return nullptr;
}

}  // namespace

ResolvedAction resolveUserAction(const std::optional<std::vector<ActionSerDeWrapper>>& actions,
                                 const Logger& logger) {
  if (!actions) {
    logger.error(logger.generalCategory(), "Actions array is missing");
    return nullptr;
  }
  if (actions->empty()) {
    logger.error(logger.generalCategory(), "Actions array is empty");
    return nullptr;
  }
  return std::visit([&](const auto& record) { return resolve(record, logger); }, actions->front().action);
}

}  // namespace QXExtensionSDK
