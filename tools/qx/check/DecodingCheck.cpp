#include "tools/qx/check/DecodingCheck.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

using QXExtensionSDK::CarouselModel;
using QXExtensionSDK::PanelItem;
using QXPlatform::DecodingError;
using QXPlatform::Value;

constexpr std::size_t kMostErrorsARecord = 16;

// The value with another in the place of a pointer whose keys need no escapes.
Value replacing(const Value& value, std::string_view pointer, const Value& replacement) {
  if (pointer.empty()) return replacement;
  const std::size_t end = std::min(pointer.find('/', 1), pointer.size());
  const std::string_view step = pointer.substr(1, end - 1);
  const std::string_view rest = pointer.substr(end);
  if (const auto dictionary = value.dictionary()) {
    const Value* member = dictionary->find(step);
    return member == nullptr ? value : dictionary->setting(step, replacing(*member, rest, replacement));
  }
  const auto elements = value.elements();
  std::vector<Value> copy(elements.begin(), elements.end());
  std::size_t index = copy.size();
  std::from_chars(step.data(), step.data() + step.size(), index);
  if (index >= copy.size()) return value;
  copy[index] = replacing(copy[index], rest, replacement);
  return copy;
}

// The decoder stops at the first error. To learn of the next, that member is taken for absent, which helps
// unless it is a required one.
template <typename Record>
std::vector<DecodingError> decodingErrors(Value value, std::string_view place) {
  std::vector<DecodingError> errors;
  while (errors.size() < kMostErrorsARecord) {
    const auto record = QXPlatform::decodeValue<Record>(value, place);
    if (record) break;
    const std::string& path = record.error().path.text();
    if (!errors.empty() && errors.back().path.text() == path) break;
    errors.push_back(record.error());
    value = replacing(value, std::string_view(path).substr(place.size()), nullptr);
  }
  return errors;
}

bool decodes(const Value& richFeatures) {
  const auto dictionary = richFeatures.dictionary();
  return dictionary && QXExtensionSDK::PayloadCarouselModelParser::decode(*dictionary);
}

}  // namespace

void checkDecoding(const Value& richFeatures, Findings& findings) {
  if (decodes(richFeatures)) return;
  const auto report = [&](const std::vector<DecodingError>& errors) {
    for (const DecodingError& error : errors) findings.error(error.path.text(), error.message);
  };
  const Value* panels = findPanels(richFeatures);
  if (panels == nullptr) return report(decodingErrors<CarouselModel>(richFeatures, kRichFeaturesPlace));
  report(decodingErrors<CarouselModel>(replacing(richFeatures, "/vt/it", std::vector<Value>()),
                                       kRichFeaturesPlace));
  for (std::size_t i = 0; i < panels->elements().size(); ++i) {
    report(decodingErrors<PanelItem>(panels->elements()[i], panelPlace(i)));
  }
}

}  // namespace qx
