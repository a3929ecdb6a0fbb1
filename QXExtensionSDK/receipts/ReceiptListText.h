#pragma once

#include <string>
#include <vector>

#include "AppGroupSDK/records/DeliveryReceiptPNModel.h"

namespace QXExtensionSDK {

using Receipts = std::vector<AppGroupSDK::DeliveryReceiptPNModel>;

// A list of receipts as a piece of a log line; the text is made only if the line is. Refers to the list.
struct ReceiptListText {
  const Receipts& receipts;

  std::string description() const {
    std::string text = "[";
    for (const auto& receipt : receipts) {
      if (text.size() > 1) text += ", ";
      text += receipt.description();
    }
    return text + "]";
  }
};

}  // namespace QXExtensionSDK
