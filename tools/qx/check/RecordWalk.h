#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/Value.h"

namespace qx {

// An object of the rich features that the framework reads as a record.
struct RecordInPlace {
  QXPlatform::Dictionary object;
  std::string place;
  std::vector<std::string_view> keys;  // that the record has
};

// Visits these objects, the outer before the inner, along the fields that the framework's own records list.
// Passes over what is of another shape.
void walkRecords(const QXPlatform::Value& richFeatures, std::string_view place,
                 const std::function<void(const RecordInPlace&)>& visit);

}  // namespace qx
