#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include "AppGroupSDK/records/DeliveryReceiptPNModel.h"
#include "QXPlatform/foundation/JSONCoding.h"

namespace AppGroupSDK {

// The receipts that have not been delivered yet.
class DeliveryReceiptsModel {
 public:
  static constexpr std::string_view dataStoreFileName() {
    return "com.veltro.qx.extensionsdk.deliveryReceipt.data";
  }

  explicit DeliveryReceiptsModel(std::vector<DeliveryReceiptPNModel> pnData) : pnData_(std::move(pnData)) {}

  const std::vector<DeliveryReceiptPNModel>& pnData() const& { return pnData_; }
  std::vector<DeliveryReceiptPNModel> pnData() && { return std::move(pnData_); }
  void setPnData(std::vector<DeliveryReceiptPNModel> pnData) { pnData_ = std::move(pnData); }

  friend bool operator==(const DeliveryReceiptsModel&, const DeliveryReceiptsModel&) = default;

 private:
  friend QXPlatform::JSONRecordAccess;
  DeliveryReceiptsModel() = default;
  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("pnData", &DeliveryReceiptsModel::pnData_));
  }

  std::vector<DeliveryReceiptPNModel> pnData_;
};

}  // namespace AppGroupSDK
