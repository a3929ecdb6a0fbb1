#pragma once

// All that a host's content extension needs, under the names that its runtime knows.

#include "QXExtensionSDK/content/Coordinator.h"
#include "QXExtensionSDK/content/DefaultCoordinatorFactory.h"
#include "QXExtensionSDK/content/VTContentExtensionConfig.h"
#include "QXExtensionSDK/content/VTQXNotificationViewController.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXExtensionSDK/service/DefaultRequestTimeout.h"
#include "QXPlatform/ui/ContentExtensionMain.h"

namespace QXExtensionSDK {

using VTQXContentExtensionConfig = VTContentExtensionConfig;

// The runtime's names for what only the framework's own entry classes use.
// NOLINTBEGIN(bugprone-reserved-identifier)
using _VTQX_Internal_Coordinator = Coordinator;
using _VTQX_Internal_DefaultCoordinatorFactory = DefaultCoordinatorFactory;
using _VTQX_Internal_Logger = Logger;
// NOLINTEND(bugprone-reserved-identifier)

}  // namespace QXExtensionSDK
