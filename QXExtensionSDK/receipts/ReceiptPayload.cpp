#include "QXExtensionSDK/receipts/ReceiptPayload.h"

#include "platform/foundation/Date.h"

namespace QXExtensionSDK {

using platform::Dictionary;
using platform::Value;

Value payloadNodes(const std::vector<Value>& items) {
  return std::vector<Value>{Dictionary{{"version", 1}, {"name", "event"}, {"items", items}}};
}

void addUnlessEmpty(PayloadEntries& entries, std::string_view key, std::string_view text) {
  if (!text.empty()) entries.emplace_back(key, text);
}

std::string receiptDate(double secondsSince1970) {
  return platform::formatUTCMilliseconds({secondsSince1970}).value_or("");
}

}  // namespace QXExtensionSDK
