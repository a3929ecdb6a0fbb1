#include "tools/qx/check/Places.h"

#include "QXPlatform/foundation/JSONPointer.h"

namespace qx {

std::string memberPlace(std::string_view object, std::string_view key) {
  QXPlatform::JSONPointer member;
  member.prependKey(key);
  member.prependText(object);
  return member.text();
}

std::string elementPlace(std::string_view array, std::size_t index) {
  return std::string(array).append("/").append(std::to_string(index));
}

const QXPlatform::Value* findPanels(const QXPlatform::Value& richFeatures) {
  const QXPlatform::Value& panels = richFeatures["vt"]["it"];
  return panels.isArray() ? &panels : nullptr;
}

std::string panelPlace(std::size_t index) {
  return elementPlace("/_rf/vt/it", index);
}

}  // namespace qx
