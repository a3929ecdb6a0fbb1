#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/Value.h"

namespace qx {

// An object of a push that is read as a record.
struct RecordInPlace {
  QXPlatform::Dictionary object;
  std::string place;
  std::vector<std::string_view> keys;  // that the record has
};

// Visits such objects, the outer before the inner, along the fields that the framework's own records list.
// Passes over what is of another shape.
void walkRecords(const QXPlatform::Value& richFeatures, std::string_view place,
                 const std::function<void(const RecordInPlace&)>& visit);
// The same in a full request, whose userInfo is none of its records.
void walkRequest(const QXPlatform::Dictionary& request,
                 const std::function<void(const RecordInPlace&)>& visit);

}  // namespace qx
