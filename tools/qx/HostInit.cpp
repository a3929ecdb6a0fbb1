#include "tools/qx/HostCommands.h"
#include "tools/qx/HostContainer.h"
#include "tools/qx/HostRecords.h"

namespace qx {

int runHostInit(const SimulatorOptions& simulator) {
  const auto container = makeContainer();
  if (!container) return fail("host init", container.error().message);
  return reportSave(simulator, "host init", DataStoreStatus::success, container->string());
}

}  // namespace qx
