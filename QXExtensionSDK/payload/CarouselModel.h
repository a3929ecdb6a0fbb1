#pragma once

#include "QXExtensionSDK/payload/ViewTemplate.h"

namespace QXExtensionSDK {

// The rich features of a push, decoded. docs/payload.md is its description for those who write payloads.
struct CarouselModel {
  ViewTemplate viewTemplate;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("vt", &CarouselModel::viewTemplate));
  }
  friend bool operator==(const CarouselModel&, const CarouselModel&) = default;
};

}  // namespace QXExtensionSDK
