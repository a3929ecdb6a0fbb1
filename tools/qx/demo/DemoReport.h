#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/qx/SimulatorOptions.h"
#include "tools/qx/demo/DemoStage.h"

namespace qx {

// What a step of the demonstration found.
struct DemoFinding {
  std::vector<std::string> notes;
  ReceiptTrails receipts;
  // Why the step did not hold; nothing when it did.
  std::optional<std::string> failure = {};
  // Why it was not taken; nothing when it was.
  std::optional<std::string> leftOut = {};
};

// Tells how the demonstration goes: for people on standard error, and as one JSON object a step on standard
// output unless that is the same terminal.
class DemoReport {
 public:
  explicit DemoReport(const SimulatorOptions& simulator);

  void step(std::string_view title, const DemoFinding& finding,
            std::chrono::duration<double, std::milli> elapsed);
  void end(const std::filesystem::path& directory);
  bool everythingHeld() const { return everythingHeld_; }

 private:
  std::string coloured(std::string_view text, std::string_view code) const;
  void addReceipts(const ReceiptTrails& receipts, std::vector<std::string>& lines) const;

  const SimulatorOptions& simulator_;
  const bool inColour_;
  const bool writesJSON_;
  bool everythingHeld_ = true;
};

}  // namespace qx
