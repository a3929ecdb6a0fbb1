#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "QXPlatform/dispatch/Clock.h"

namespace QXExtensionSDK {

inline constexpr std::chrono::seconds kClaimLifetime{22};

// What the runs of this process that work on one receipt file know of each other, so that none overwrites
// what another has stored and none sends what another is sending. A run that is alone finds nothing here.
// Any thread.
class ReceiptFile {
 public:
  // The same object for every run on that file at the time.
  static std::shared_ptr<ReceiptFile> shared(AppGroupSDK::ExtensionModuleName module, std::string_view appId);

  // Held while the list is read or changed, and over all that must not come apart: choosing receipts and
  // claiming them, removing receipts and giving them back. Guards everything below.
  std::recursive_mutex mutex;

  // How often a run has tried to write the file: a write that failed may have replaced it all the same.
  std::uint64_t writes = 0;

  // The receipts that the back end has. They stay away even if the file, whose write failed, still has them.
  std::unordered_set<std::string> acknowledged;

  // Marks a receipt as being sent by `sender`; false when another has been sending it for less than
  // kClaimLifetime. By then that run has given its push back, whatever its back end still does.
  bool claim(const std::string& uuid, const void* sender);
  void releaseAll(const void* sender);

 private:
  struct Claim {
    const void* sender;
    QXPlatform::Clock::TimePoint end;
  };

  std::unordered_map<std::string, Claim> claims_;
};

}  // namespace QXExtensionSDK
