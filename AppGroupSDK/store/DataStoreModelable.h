#pragma once

#include <concepts>
#include <string_view>

#include "QXPlatform/foundation/JSONCoding.h"

namespace AppGroupSDK {

// A record that has a file of its own: with its JSON fields, and a static dataStoreFileName(), the base name
// of the file.
template <typename T>
concept DataStoreModelable = QXPlatform::JSONRecord<T> && requires {
  { T::dataStoreFileName() } -> std::convertible_to<std::string_view>;
};

}  // namespace AppGroupSDK
