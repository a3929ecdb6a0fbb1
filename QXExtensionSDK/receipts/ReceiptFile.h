#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "AppGroupSDK/context/ExtensionModuleName.h"

namespace QXExtensionSDK {

// What the runs of this process that work on one receipt file know of each other, so that none overwrites
// what another has stored and none sends what another is sending. A run that is alone finds nothing here.
// Any thread.
class ReceiptFile {
 public:
  // The same object for every run on that file at the time.
  static std::shared_ptr<ReceiptFile> shared(AppGroupSDK::ExtensionModuleName module, std::string_view appId);

  // Held while the file is read, changed and written.
  std::mutex mutex;
  // How often a run has written the file. Guarded by mutex.
  std::uint64_t writes = 0;

  // Marks a receipt as being sent by `sender`; false when it is being sent already.
  bool claim(const std::string& uuid, const void* sender);
  void releaseAll(const void* sender);

 private:
  std::mutex claimsMutex_;
  std::unordered_map<std::string, const void*> claims_;  // guarded by claimsMutex_
};

}  // namespace QXExtensionSDK
