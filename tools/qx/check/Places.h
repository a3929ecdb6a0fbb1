#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Value.h"

namespace qx {

// Places in a push are JSON pointers that count from the userInfo, such as /_rf/vt/it/0.

inline constexpr std::string_view kRichFeaturesPlace = "/_rf";
inline constexpr std::string_view kCompressedRichFeaturesPlace = "/$_rf";

std::string memberPlace(std::string_view object, std::string_view key);
std::string elementPlace(std::string_view array, std::size_t index);

// What a pointer leads to; null when there is nothing.
const QXPlatform::Value& valueAt(const QXPlatform::Value& root, std::string_view pointer);

// The same with that value there.
QXPlatform::Value withValueAt(const QXPlatform::Value& root, std::string_view pointer,
                              const QXPlatform::Value& value);

// "a/b" of a pointer's step "a~1b".
std::string unescapedStep(std::string_view step);

// The array of panels in the rich features, decodable or not; null when there is none.
const QXPlatform::Value* findPanels(const QXPlatform::Value& richFeatures);
std::string panelPlace(std::size_t index);

}  // namespace qx
