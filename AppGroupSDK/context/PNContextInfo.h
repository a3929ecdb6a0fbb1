#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/foundation/RawValues.h"

namespace AppGroupSDK {

enum class PNContextSource : std::int64_t { none = 0, sourceOne = 1, sourceTwo = 2 };
constexpr auto rawValues(QXPlatform::RawValuesOf<PNContextSource>) {
  return std::to_array({PNContextSource::none, PNContextSource::sourceOne, PNContextSource::sourceTwo});
}

enum class PNContextDestination : std::int64_t { none = 0, engagement = 1, appMessaging = 2, unmapped = 4 };
constexpr auto rawValues(QXPlatform::RawValuesOf<PNContextDestination>) {
  return std::to_array({PNContextDestination::none, PNContextDestination::engagement,
                        PNContextDestination::appMessaging, PNContextDestination::unmapped});
}

// Who sent a push and which modules it is meant for. Immutable.
class PNContextInfo {
 public:
  PNContextInfo() = delete;
  // `destinationsArray`: raw values of destinations.
  PNContextInfo(PNContextSource source, std::vector<std::int64_t> destinationsArray,
                std::optional<std::string> businessUnitId);

  PNContextSource source() const { return source_; }
  const std::vector<std::int64_t>& destinationsArray() const { return destinationsArray_; }
  const std::optional<std::string>& businessUnitId() const { return businessUnitId_; }

  // The known ones among the numbers of destinationsArray(), in its order.
  std::vector<PNContextDestination> destinations() const;
  bool containsDestination(PNContextDestination destination) const;
  // Whether this says nothing at all: no source, no business unit, and no destination or only `none`.
  bool isInavlidOrAbsentContext() const;

  // Such as "source: 1, destinations: [2, 4], businessUnitId: BU-7".
  std::string description() const;

  friend bool operator==(const PNContextInfo&, const PNContextInfo&) = default;

 private:
  PNContextSource source_;
  std::vector<std::int64_t> destinationsArray_;
  std::optional<std::string> businessUnitId_;
};

}  // namespace AppGroupSDK
