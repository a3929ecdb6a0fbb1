#pragma once

#include <optional>
#include <vector>

#include "QXExtensionSDK/payload/Action.h"
#include "QXExtensionSDK/payload/UserAction.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

// What a tap on a panel with these actions does: the first of them. Nothing, after one error line, when there
// is none or when it lacks a target that is a URL. Any thread.
std::optional<UserAction> resolveUserAction(const std::optional<std::vector<ActionSerDeWrapper>>& actions,
                                            const Logger& logger);

}  // namespace QXExtensionSDK
