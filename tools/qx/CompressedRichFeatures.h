#pragma once

#include <string>

#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

namespace qx {

// The rich features as a push carries them compressed. Fails for more than a device inflates.
platform::Result<std::string> compressRichFeatures(const platform::Dictionary& richFeatures);

// The way back, by the framework's own inflation. Fails, saying why, for what a device does not inflate.
platform::Result<platform::Dictionary> inflateRichFeatures(const platform::Value& field);

}  // namespace qx
