#include "tools/qx/check/Places.h"

#include "platform/foundation/JSONPointer.h"

namespace qx {

std::string memberPlace(std::string_view object, std::string_view key) {
  platform::JSONPointer member;
  member.prependKey(key);
  member.prependText(object);
  return member.text();
}

std::string elementPlace(std::string_view array, std::size_t index) {
  return std::string(array).append("/").append(std::to_string(index));
}

const platform::Value* findPanels(const platform::Value& richFeatures) {
  const platform::Value* viewTemplate = richFeatures.find("vt");
  const platform::Value* panels = viewTemplate != nullptr ? viewTemplate->find("it") : nullptr;
  return panels != nullptr && panels->isArray() ? panels : nullptr;
}

std::string panelPlace(std::size_t index) {
  return elementPlace("/_rf/vt/it", index);
}

}  // namespace qx
