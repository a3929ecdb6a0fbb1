#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "QXExtensionSDK/receipts/ReceiptIds.h"
#include "QXPlatform/dispatch/Clock.h"

namespace QXExtensionSDK {

inline constexpr std::chrono::seconds kClaimLifetime{22};

// The life of a receipt, as far as this process has a part in it:
//
//   stored        in the module's file, pending                      DeliveryReceiptsPNStore
//   claimed       by the run that sends it: no other run of this     ReceiptRun::Claims
//                 process does meanwhile
//   acknowledged  by the back end: no run claims it any more         ReceiptRun::acknowledge
//   removed       from the file, by the same or a later save         ReceiptRun::removed
//   given back    when its request failed, as failed                 ReceiptRun::releaseAll
//
// A run is what one push does with one module's receipts. The runs at work on one file keep a ledger of what
// is claimed and acknowledged; the receipts themselves they share through the file alone. Any thread.
class ReceiptRun {
 public:
  ReceiptRun(AppGroupSDK::ExtensionModuleName module, std::string_view appId);
  // Gives back what it has claimed.
  ~ReceiptRun();
  ReceiptRun(const ReceiptRun&) = delete;
  ReceiptRun& operator=(const ReceiptRun&) = delete;

  // Claims made in one go: while it lives, other calls on this run and the other ones wait.
  class Claims {
   public:
    explicit Claims(ReceiptRun& run);
    // False when it is acknowledged, when this run has claimed it already, or when another run has been
    // sending it for less than kClaimLifetime. By then that run has given its push back, whatever its back
    // end still does.
    bool add(std::string_view uuid);

   private:
    ReceiptRun& run_;
    const std::lock_guard<std::mutex> lock_;
    const QXPlatform::Clock::TimePoint now_;
  };
  void releaseAll();

  // What has been acknowledged, seen in one go: while it lives, other calls on this run and on the other ones
  // of its file wait.
  class Acknowledged {
   public:
    explicit Acknowledged(const ReceiptRun& run);
    bool contains(std::string_view uuid) const;

   private:
    const ReceiptRun& run_;
    const std::lock_guard<std::mutex> lock_;
  };

  void acknowledge(const ReceiptIds& uuids);
  // The file is known to be without them. Their entries stay for the runs that have read it before.
  void removed(const ReceiptIds& uuids);

 private:
  struct Ledger;

  const std::shared_ptr<Ledger> ledger_;
  std::uint64_t number_;    // in the order of their beginning
  bool hasClaims_ = false;  // guarded by the ledger's mutex
};

}  // namespace QXExtensionSDK
