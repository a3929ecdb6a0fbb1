#pragma once

#include "QXExtensionSDK/payload/Color.h"

namespace qx {

// The ratio of the colours' relative luminances, as WCAG 2 has it: from 1, the same, to 21.
double contrast(const QXExtensionSDK::Color& one, const QXExtensionSDK::Color& other);

}  // namespace qx
