#include "tools/qx/Results.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "QXPlatform/foundation/JSONText.h"
#include "QXPlatform/log/StandardError.h"
#include "tools/qx/Printable.h"

namespace qx {

namespace {

// Asked once: it does not change, and every push of thousands would ask again.
bool writesToTerminal() {
  static const bool writes = isatty(STDOUT_FILENO) != 0;
  return writes;
}

}  // namespace

void appendResult(std::string& text, const SimulatorOptions& simulator, const QXPlatform::Value& result) {
  const auto style = simulator.pretty ? QXPlatform::JSONStyle::pretty : QXPlatform::JSONStyle::compact;
  QXPlatform::appendJSONOrDescription(text, result, style);
  text += '\n';
}

std::string resultText(const SimulatorOptions& simulator, const QXPlatform::Value& result) {
  std::string text;
  appendResult(text, simulator, result);
  return text;
}

bool isForPeople(const SimulatorOptions& simulator) {
  return !simulator.json && !simulator.pretty && writesToTerminal();
}

bool isInColour() {
  return writesToTerminal() && std::getenv("NO_COLOR") == nullptr;
}

void printResult(const SimulatorOptions& simulator, const QXPlatform::Value& result) {
  std::cout << resultText(simulator, result) << std::flush;
}

int fail(std::string_view command, std::string_view reason) {
  QXPlatform::writeToStandardError(std::string("qx ").append(command).append(": ").append(printable(reason)) +
                                   "\n");
  return 1;
}

int finish(int exitCode) {
  if (exitCode != 0 || std::cout.flush()) return exitCode;
  std::cerr << "qx: the results cannot be written\n";
  return 1;
}

}  // namespace qx
