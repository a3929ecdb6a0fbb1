#include "tools/qx/PushSize.h"

#include <algorithm>
#include <functional>

namespace qx {

std::size_t pushSize(const QXPlatform::Dictionary& userInfo) {
  return userInfo.description().size();
}

std::vector<std::pair<std::string, std::size_t>> sizesByKey(const QXPlatform::Dictionary& userInfo) {
  constexpr std::size_t kBraces = 2;
  std::vector<std::pair<std::string, std::size_t>> sizes;
  for (const auto& [key, value] : userInfo) sizes.emplace_back(key, pushSize({{key, value}}) - kBraces);
  std::ranges::stable_sort(sizes, std::ranges::greater(), &std::pair<std::string, std::size_t>::second);
  return sizes;
}

}  // namespace qx
