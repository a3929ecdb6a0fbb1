#include "AppGroupSDK/context/PNContextInfo.h"

#include <algorithm>
#include <utility>

namespace AppGroupSDK {

PNContextInfo::PNContextInfo(PNContextSource source, std::vector<std::int64_t> destinationsArray,
                             std::optional<std::string> businessUnitId)
    : source_(source),
      destinationsArray_(std::move(destinationsArray)),
      businessUnitId_(std::move(businessUnitId)) {}

std::vector<PNContextDestination> PNContextInfo::destinations() const {
  std::vector<PNContextDestination> destinations;
  for (const std::int64_t rawValue : destinationsArray_) {
    if (const auto destination = QXPlatform::fromRawValue<PNContextDestination>(rawValue))
      destinations.push_back(*destination);
  }
  return destinations;
}

bool PNContextInfo::containsDestination(PNContextDestination destination) const {
  return std::ranges::find(destinationsArray_, QXPlatform::rawValue(destination)) != destinationsArray_.end();
}

bool PNContextInfo::isInavlidOrAbsentContext() const {
  if (source_ != PNContextSource::none || businessUnitId_) return false;
  return destinationsArray_.empty() || destinations() == std::vector{PNContextDestination::none};
}

std::string PNContextInfo::description() const {
  std::string text = "source: " + std::to_string(QXPlatform::rawValue(source_)) + ", destinations: [";
  for (std::size_t index = 0; index < destinationsArray_.size(); ++index) {
    if (index > 0) text += ", ";
    text += std::to_string(destinationsArray_[index]);
  }
  text += "], businessUnitId: " + businessUnitId_.value_or("none");
  return text;
}

}  // namespace AppGroupSDK
