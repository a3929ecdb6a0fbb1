#pragma once

// The framework's version: for the preprocessor, and, as that of the library which the process has loaded,
// below.
#define QX_VERSION_MAJOR 1
#define QX_VERSION_MINOR 0
#define QX_VERSION_PATCH 0

namespace QXExtensionSDK {

// The framework's version, as a number (major.minor) and as the text that tools print.
extern const double QXExtensionSDKVersionNumber;
extern const unsigned char QXExtensionSDKVersionString[];

}  // namespace QXExtensionSDK
