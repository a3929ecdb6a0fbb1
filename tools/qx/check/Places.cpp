#include "tools/qx/check/Places.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <vector>

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

std::string unescapedStep(std::string_view step) {
  std::string key;
  for (std::size_t i = 0; i < step.size(); ++i) {
    const bool escaped = step[i] == '~' && i + 1 < step.size();
    key += escaped ? (step[++i] == '1' ? '/' : '~') : step[i];
  }
  return key;
}

const QXPlatform::Value& valueAt(const QXPlatform::Value& root, std::string_view pointer) {
  const QXPlatform::Value* value = &root;
  while (!pointer.empty()) {
    const std::string_view step = pointer.substr(1, pointer.find('/', 1) - 1);
    pointer.remove_prefix(step.size() + 1);
    std::size_t index = value->elements().size();
    std::from_chars(step.data(), step.data() + step.size(), index);
    value = index < value->elements().size() ? &value->elements()[index] : &(*value)[unescapedStep(step)];
  }
  return *value;
}

QXPlatform::Value withValueAt(const QXPlatform::Value& root, std::string_view pointer,
                              const QXPlatform::Value& value) {
  if (pointer.empty()) return value;
  const std::string_view step = pointer.substr(1, pointer.find('/', 1) - 1);
  const std::string_view rest = pointer.substr(step.size() + 1);
  if (!root.isArray()) {
    const std::string key = unescapedStep(step);
    return root.dictionary()
        .value_or(QXPlatform::Dictionary())
        .merging({{key, withValueAt(root[key], rest, value)}});
  }
  std::vector<QXPlatform::Value> elements(root.elements().begin(), root.elements().end());
  std::size_t index = elements.size();
  std::from_chars(step.data(), step.data() + step.size(), index);
  if (index < elements.size()) elements[index] = withValueAt(elements[index], rest, value);
  return elements;
}

const QXPlatform::Value* findPanels(const QXPlatform::Value& richFeatures) {
  const QXPlatform::Value& panels = richFeatures["vt"]["it"];
  return panels.isArray() ? &panels : nullptr;
}

std::string panelPlace(std::size_t index) {
  return elementPlace("/_rf/vt/it", index);
}

}  // namespace qx
