#include "tools/qx/check/Findings.h"

#include <algorithm>

#include "tools/qx/check/Places.h"

namespace qx {

void Findings::add(Finding::Severity severity, std::string_view at, std::string message, std::string hint) {
  const bool inCompressed = isInflated_ && (at == kRichFeaturesPlace || at.starts_with("/_rf/"));
  std::string source = std::string(root_).append(inCompressed ? kCompressedRichFeaturesPlace : at);
  found_.push_back({severity, std::string(at), std::move(message), std::move(hint), std::move(source)});
}

void Findings::warnOfFrame(std::string_view place, std::string_view message, std::string hint) {
  found_.push_back({Finding::Severity::warning, "", std::string(place).append(": ").append(message),
                    std::move(hint), std::string(place)});
}

std::vector<Finding> Findings::sorted() && {
  std::ranges::stable_sort(found_, {}, &Finding::severity);
  return std::move(found_);
}

}  // namespace qx
