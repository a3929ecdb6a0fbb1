#pragma once

#include <string>
#include <string_view>

#include "QXPlatform/foundation/Value.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

// A command's result as it is written, with the end of the line.
std::string resultText(const SimulatorOptions& simulator, const QXPlatform::Value& result);
void appendResult(std::string& text, const SimulatorOptions& simulator, const QXPlatform::Value& result);

// Whether results are for people, on a terminal where nobody has asked for JSON.
bool isForPeople(const SimulatorOptions& simulator);
// Whether standard output takes colours.
bool isInColour();

// Writes a command's result, as one line unless it is to be pretty, to standard output.
void printResult(const SimulatorOptions& simulator, const QXPlatform::Value& result);

// Says on standard error, in one line, what went wrong; returns the exit code of a refused input or failed
// check.
int fail(std::string_view command, std::string_view reason);

// The exit code of a program that ends with this one; says so, and gives another, when results were lost on
// their way out.
int finish(int exitCode);

}  // namespace qx
