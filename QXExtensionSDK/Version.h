#pragma once

namespace QXExtensionSDK {

// The framework's version, as a number (major.minor) and as the text that tools print.
extern const double QXExtensionSDKVersionNumber;
extern const unsigned char QXExtensionSDKVersionString[];

}  // namespace QXExtensionSDK
