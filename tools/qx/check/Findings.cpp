#include "tools/qx/check/Findings.h"

#include <algorithm>

namespace qx {

std::vector<Finding> Findings::sorted() && {
  std::ranges::stable_sort(found_, {}, &Finding::severity);
  return std::move(found_);
}

}  // namespace qx
