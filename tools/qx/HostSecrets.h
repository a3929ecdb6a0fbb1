#pragma once

#include "QXPlatform/foundation/Value.h"

namespace qx {

// A device record fit for a terminal: the tokens shortened, the base URL without its user and password.
QXPlatform::Dictionary hidingSecrets(const QXPlatform::Dictionary& record);

}  // namespace qx
