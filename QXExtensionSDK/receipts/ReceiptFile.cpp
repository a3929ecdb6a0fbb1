#include "QXExtensionSDK/receipts/ReceiptFile.h"

#include <map>

#include "AppGroupSDK/store/Trimming.h"

namespace QXExtensionSDK {

std::shared_ptr<ReceiptFile> ReceiptFile::shared(AppGroupSDK::ExtensionModuleName module,
                                                 std::string_view appId) {
  struct Registry {
    std::mutex mutex;
    std::map<std::string, std::weak_ptr<ReceiptFile>> files;  // guarded by mutex
  };
  // Never destroyed: runs may end while the process exits.
  static Registry& registry = *new Registry;

  const std::lock_guard lock(registry.mutex);
  // The file's name does without the blanks as well.
  const auto name = AppGroupSDK::trimmingWhitespaceAndNewlines(appId);
  auto& known = registry.files[std::string(stringValue(module)).append("/").append(name)];
  auto file = known.lock();
  if (file == nullptr) known = file = std::make_shared<ReceiptFile>();
  return file;
}

bool ReceiptFile::claim(const std::string& uuid, const void* sender) {
  const auto now = QXPlatform::Clock::current().now();
  const auto [claim, isNew] = claims_.try_emplace(uuid, Claim{sender, now + kClaimLifetime});
  if (isNew) return true;
  if (now < claim->second.end) return false;
  claim->second = {sender, now + kClaimLifetime};
  return true;
}

void ReceiptFile::releaseAll(const void* sender) {
  std::erase_if(claims_, [sender](const auto& claim) { return claim.second.sender == sender; });
}

}  // namespace QXExtensionSDK
