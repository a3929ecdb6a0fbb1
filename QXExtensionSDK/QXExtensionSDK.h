#pragma once

// All that a host's service extension needs, under the names that its runtime knows.

#include "QXExtensionSDK/Version.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/runtime/ClientCalling.h"
#include "QXExtensionSDK/runtime/NotificationServiceWorker.h"
#include "QXExtensionSDK/runtime/VTQXNotificationService.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXExtensionSDK/runtime/processing/VTNotificationServiceConfig.h"
#include "QXExtensionSDK/service/DefaultRequestTimeout.h"
#include "QXPlatform/foundation/Exception.h"
#include "QXPlatform/notifications/ServiceExtensionMain.h"

namespace QXExtensionSDK {

using VTQXNotificationServiceConfig = VTNotificationServiceConfig;

// The runtime's names for what only the framework's own entry classes use.
// NOLINTBEGIN(bugprone-reserved-identifier)
using _VTQX_Internal_Logger = Logger;
using _VTQX_Internal_NotificationServiceWorker = NotificationServiceWorker;
using _VTQX_Internal_NotificationServiceWorking = NotificationServiceWorking;
using _VTQX_Internal_ClientCalling = ClientCalling;
using _VTQX_Internal_VTQXUtility = VTQXUtility;
// NOLINTEND(bugprone-reserved-identifier)

}  // namespace QXExtensionSDK
