#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "AppGroupSDK/records/CarouselClickModel.h"
#include "QXExtensionSDK/payload/UserAction.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

// The record of a click on the panel at `index`. Nothing, after an error line, when the action is not of the
// kind that it declares.
std::optional<AppGroupSDK::CarouselClickModel> makeCarouselClick(const std::string& notificationUniqueId,
                                                                 std::int64_t index,
                                                                 const std::string& panelId,
                                                                 const UserAction& action,
                                                                 const Logger& logger);

}  // namespace QXExtensionSDK
