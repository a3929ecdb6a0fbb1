#pragma once

#include <optional>
#include <string>

#include "QXPlatform/foundation/JSONCoding.h"

namespace QXExtensionSDK {

// How an area of the payload looks. The colour is as written: parseColor() says whether it is one.
struct GenericStyle {
  std::optional<std::string> backgroundColor;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("bgc", &GenericStyle::backgroundColor));
  }
  friend bool operator==(const GenericStyle&, const GenericStyle&) = default;
};

}  // namespace QXExtensionSDK
