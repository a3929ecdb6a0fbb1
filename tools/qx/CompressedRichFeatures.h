#pragma once

#include <string>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"

namespace qx {

// The rich features as a push carries them compressed. Fails for more than a device inflates.
QXPlatform::Result<std::string> compressRichFeatures(const QXPlatform::Dictionary& richFeatures);

// The way back, by the framework's own inflation. Fails, saying why, for what a device does not inflate.
QXPlatform::Result<QXPlatform::Dictionary> inflateRichFeatures(const QXPlatform::Value& field);

}  // namespace qx
