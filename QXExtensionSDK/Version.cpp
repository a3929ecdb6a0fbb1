#include "QXExtensionSDK/Version.h"

namespace QXExtensionSDK {

const double QXExtensionSDKVersionNumber = QX_VERSION_NUMBER;
const unsigned char QXExtensionSDKVersionString[] = QX_VERSION_STRING;

}  // namespace QXExtensionSDK
