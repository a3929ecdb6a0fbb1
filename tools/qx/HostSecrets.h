#pragma once

#include "platform/foundation/Value.h"

namespace qx {

// A device record fit for a terminal: the tokens shortened, the base URL without its user and password.
platform::Dictionary hidingSecrets(const platform::Dictionary& record);

}  // namespace qx
