#pragma once

#include <string_view>

namespace QXExtensionSDK {

// Where a push carries its rich features in userInfo: plain, and as base64 of raw-deflate JSON.
inline constexpr std::string_view kRichFeaturesKey = "_rf";
inline constexpr std::string_view kCompressedRichFeaturesKey = "$_rf";

}  // namespace QXExtensionSDK
