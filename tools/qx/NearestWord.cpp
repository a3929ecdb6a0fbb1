#include "tools/qx/NearestWord.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace qx {

namespace {

// Letters to put in, leave out, exchange, or swap with their neighbour.
std::size_t editsBetween(std::string_view from, std::string_view to) {
  std::vector<std::vector<std::size_t>> edits(from.size() + 1, std::vector<std::size_t>(to.size() + 1));
  for (std::size_t i = 0; i <= from.size(); ++i) {
    for (std::size_t j = 0; j <= to.size(); ++j) {
      std::size_t& fewest = edits[i][j];
      fewest = i + j;
      if (i == 0 || j == 0) continue;
      const std::size_t exchange = from[i - 1] == to[j - 1] ? 0 : 1;
      fewest = std::min({edits[i - 1][j] + 1, edits[i][j - 1] + 1, edits[i - 1][j - 1] + exchange});
      const bool isSwap = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (isSwap) fewest = std::min(fewest, edits[i - 2][j - 2] + 1);
    }
  }
  return edits[from.size()][to.size()];
}

}  // namespace

std::optional<std::string> nearestWord(std::string_view written, const std::vector<std::string>& known) {
  constexpr std::size_t kLongest = 64;
  constexpr std::size_t kShortestBeginning = 4;
  if (written.size() > kLongest) return std::nullopt;
  std::pair<std::size_t, const std::string*> best{std::max<std::size_t>(1, written.size() / 3) + 1, nullptr};
  for (const std::string& word : known) {
    const bool isBeginning = written.size() >= kShortestBeginning && word.starts_with(written);
    const std::size_t edits = isBeginning ? 1 : editsBetween(written, word);
    if (edits < best.first) best = {edits, &word};
  }
  return best.second == nullptr ? std::nullopt : std::optional(*best.second);
}

}  // namespace qx
