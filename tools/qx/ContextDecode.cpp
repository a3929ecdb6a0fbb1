#include <iostream>
#include <vector>

#include "AppGroupSDK/context/PNContextUtils.h"
#include "tools/qx/ContextCommands.h"
#include "tools/qx/Results.h"

namespace qx {

int runContextDecode(const SimulatorOptions& simulator, const std::string& text) {
  const auto context = AppGroupSDK::PNContextUtils::parseContextInfoFromContextString(text);
  const std::vector<QXPlatform::Value> destinations(context.destinationsArray().begin(),
                                                    context.destinationsArray().end());
  QXPlatform::Dictionary result{{"source", QXPlatform::rawValue(context.source())},
                                {"destinationsArray", destinations}};
  if (context.businessUnitId()) result = result.setting("businessUnitId", *context.businessUnitId());
  printResult(simulator, result);
  if (context.isInavlidOrAbsentContext()) {
    std::cerr << "qx context decode: a device takes this for no context, so only the engagement module "
                 "acts on the push\n";
  }
  return 0;
}

}  // namespace qx
