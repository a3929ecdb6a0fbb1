#include "AppGroupSDK/records/CarouselClickModel.h"
#include "tools/qx/HostCommands.h"
#include "tools/qx/HostRecords.h"

namespace qx {

int runHostLastClick(const SimulatorOptions& simulator, ExtensionModuleName module) {
  const auto click = fetchRecord<AppGroupSDK::CarouselClickModel>(module);
  if (!click) return fail("host last-click", click.error().message);
  if (!click->value()) return fail("host last-click", explain(click->status()));
  printResult(simulator, encodeRecord(*click->value()));
  return 0;
}

}  // namespace qx
