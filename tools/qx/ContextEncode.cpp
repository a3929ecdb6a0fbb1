#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/UTF8.h"
#include "tools/qx/ContextCommands.h"
#include "tools/qx/Results.h"

namespace qx {

int runContextEncode(const SimulatorOptions& simulator, const ContextEncodeOptions& options) {
  const std::string& unit = options.businessUnit;
  if (unit.find(':') != std::string::npos) {
    return fail("context encode", "a business unit cannot hold a colon, which parts the fields");
  }
  if (!QXPlatform::isValidUTF8(unit)) return fail("context encode", "the business unit is not UTF-8");
  const std::string fields =
      std::to_string(options.source) + ":" + std::to_string(options.destinations) + ":" + unit;
  printResult(simulator, QXPlatform::Dictionary{{"context", QXPlatform::encodeBase64(fields)}});
  return 0;
}

}  // namespace qx
