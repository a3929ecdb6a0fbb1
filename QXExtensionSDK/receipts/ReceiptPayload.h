#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/foundation/Value.h"

namespace QXExtensionSDK {

// What the bodies of both modules have in common.

using PayloadEntries = std::vector<std::pair<std::string, platform::Value>>;

// The list that wraps a module's items.
platform::Value payloadNodes(const std::vector<platform::Value>& items);

// Adds a text unless it is empty.
void addUnlessEmpty(PayloadEntries& entries, std::string_view key, std::string_view text);

// 2024-05-01T09:03:07.250Z; empty for an instant that has no such form.
std::string receiptDate(double secondsSince1970);

}  // namespace QXExtensionSDK
