#include "tools/qx/demo/DemoReport.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/log/StandardError.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Value;

constexpr std::string_view kGreen = "32";
constexpr std::string_view kRed = "31";
constexpr std::string_view kFaint = "2";
constexpr std::string_view kIndent = "    ";

using Row = std::array<std::string, 4>;

std::string indented(std::string_view text) {
  return std::string(kIndent).append(text);
}

std::string joined(const MessageIds& ids) {
  if (ids.empty()) return "-";
  std::string text;
  for (const std::string& id : ids) text += (text.empty() ? "" : ", ") + id;
  return text;
}

std::vector<Row> tableOf(const ReceiptTrails& receipts) {
  std::vector<Row> rows{{"receipts of", "stored before", "received by the back end", "stored after"}};
  for (const auto& [module, trail] : receipts) {
    rows.push_back({std::string(stringValue(module)), joined(trail.storedBefore), joined(trail.received),
                    joined(trail.storedAfter)});
  }
  return rows;
}

std::string line(const Row& row, const std::vector<Row>& table) {
  std::string text;
  for (std::size_t column = 0; column < row.size(); ++column) {
    std::size_t width = 0;
    for (const Row& other : table) width = std::max(width, other[column].size());
    text += row[column] + std::string(width - row[column].size() + 3, ' ');
  }
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

Value list(const MessageIds& ids) {
  return std::vector<Value>(ids.begin(), ids.end());
}

Dictionary receiptsJSON(const ReceiptTrails& receipts) {
  Dictionary json;
  for (const auto& [module, trail] : receipts) {
    json = json.setting(stringValue(module), Dictionary{{"storedBefore", list(trail.storedBefore)},
                                                        {"received", list(trail.received)},
                                                        {"storedAfter", list(trail.storedAfter)}});
  }
  return json;
}

std::string milliseconds(std::chrono::duration<double, std::milli> elapsed) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.0f ms", elapsed.count());
  return text.data();
}

}  // namespace

DemoReport::DemoReport(const SimulatorOptions& simulator)
    : simulator_(simulator),
      inColour_(isatty(STDERR_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr),
      writesJSON_(isatty(STDOUT_FILENO) == 0 || isatty(STDERR_FILENO) == 0) {}

void DemoReport::step(std::string_view title, const DemoFinding& finding,
                      std::chrono::duration<double, std::milli> elapsed) {
  const bool held = !finding.failure;
  everythingHeld_ = everythingHeld_ && held;
  const std::string mark =
      finding.leftOut ? coloured("– ", kFaint) : coloured(held ? "✓ " : "✗ ", held ? kGreen : kRed);
  std::vector<std::string> lines{
      std::string(mark).append(title).append("  ").append(coloured(milliseconds(elapsed), kFaint))};
  for (const std::string& note : finding.notes) lines.push_back(indented(note));
  if (finding.leftOut) lines.push_back(indented("left out: " + *finding.leftOut));
  if (finding.failure) lines.push_back(indented(coloured(*finding.failure, kRed)));
  if (!finding.receipts.empty()) addReceipts(finding.receipts, lines);
  std::string text;
  for (const std::string& each : lines) text += each + "\n";
  QXPlatform::writeToStandardError(text + "\n");
  if (!writesJSON_) return;
  Dictionary json{{"step", title}, {"held", held}, {"elapsedMs", elapsed.count()}};
  if (finding.leftOut) json = {{"step", title}, {"leftOut", *finding.leftOut}};
  if (finding.failure) json = json.setting("error", *finding.failure);
  if (!finding.receipts.empty()) json = json.setting("receipts", receiptsJSON(finding.receipts));
  printResult(simulator_, json);
}

void DemoReport::end(const std::filesystem::path& directory) {
  const std::string verdict =
      everythingHeld_ ? coloured("Everything held.", kGreen) : coloured("Not everything held.", kRed);
  QXPlatform::writeToStandardError(verdict + " What was sent, shown and received lies in " +
                                   directory.string() + "/\n");
}

std::string DemoReport::coloured(std::string_view text, std::string_view code) const {
  if (!inColour_) return std::string(text);
  return std::string("\033[").append(code).append("m").append(text).append("\033[0m");
}

void DemoReport::addReceipts(const ReceiptTrails& receipts, std::vector<std::string>& lines) const {
  const auto table = tableOf(receipts);
  for (const Row& row : table) {
    const bool head = &row == &table.front();
    lines.push_back(indented(head ? coloured(line(row, table), kFaint) : line(row, table)));
  }
}

}  // namespace qx
