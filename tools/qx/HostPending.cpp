#include "AppGroupSDK/records/DeliveryReceiptsModel.h"
#include "tools/qx/HostCommands.h"
#include "tools/qx/HostRecords.h"

namespace qx {

int runHostPending(const SimulatorOptions& simulator, ExtensionModuleName module) {
  const auto receipts = fetchRecord<AppGroupSDK::DeliveryReceiptsModel>(module);
  if (!receipts) return fail("host pending", receipts.error().message);
  if (receipts->status() == DataStoreStatus::noData) return 0;
  if (!receipts->value()) return fail("host pending", explain(receipts->status()));
  for (const auto& receipt : receipts->value()->pnData()) printResult(simulator, encodeRecord(receipt));
  return 0;
}

}  // namespace qx
