#include "QXExtensionSDK/runtime/Version.h"

namespace QXExtensionSDK {

const double QXExtensionSDKVersionNumber = 1.0;
const unsigned char QXExtensionSDKVersionString[] = "1.0.0";

}  // namespace QXExtensionSDK
