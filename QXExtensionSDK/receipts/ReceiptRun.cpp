#include "QXExtensionSDK/receipts/ReceiptRun.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <unordered_map>

#include "AppGroupSDK/store/Trimming.h"
#include "QXPlatform/dispatch/Clock.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXExtensionSDK {

// What the runs on one file have in common.
struct ReceiptRun::Ledger {
  // Of a receipt that is claimed, acknowledged or both.
  struct Entry {
    std::uint64_t claimedBy = kNobody;
    QXPlatform::Clock::TimePoint claimEnd{};
    // With the last run that had begun when the receipt was removed; kStillInFile before.
    std::optional<std::uint64_t> acknowledged;
  };

  static constexpr std::uint64_t kNobody = 0;
  static constexpr std::uint64_t kStillInFile = UINT64_MAX;

  // The same object for every run on that file at the time.
  static std::shared_ptr<Ledger> shared(AppGroupSDK::ExtensionModuleName module, std::string_view appId);

  void releaseAll(std::uint64_t run) {
    for (auto& [uuid, entry] : entries) {
      if (entry.claimedBy == run) entry.claimedBy = kNobody;
    }
    std::erase_if(entries, [](const auto& each) {
      return each.second.claimedBy == kNobody && !each.second.acknowledged;
    });
  }

  std::mutex mutex;  // guards what follows
  std::uint64_t begun = 0;
  std::set<std::uint64_t> running;
  std::unordered_map<std::string, Entry> entries;
};

std::shared_ptr<ReceiptRun::Ledger> ReceiptRun::Ledger::shared(AppGroupSDK::ExtensionModuleName module,
                                                               std::string_view appId) {
  struct Registry {
    std::mutex mutex;
    std::map<std::string, std::weak_ptr<Ledger>> ledgers;  // guarded by mutex
  };
  // Never destroyed: runs may end while the process exits.
  static QXPlatform::NeverDestroyed<Registry> registry;

  const std::lock_guard lock(registry->mutex);
  // The file's name does without the blanks as well.
  const auto name = AppGroupSDK::trimmingWhitespaceAndNewlines(appId);
  auto& known = registry->ledgers[std::string(stringValue(module)).append("/").append(name)];
  auto ledger = known.lock();
  if (ledger == nullptr) known = ledger = std::make_shared<Ledger>();
  return ledger;
}

ReceiptRun::ReceiptRun(AppGroupSDK::ExtensionModuleName module, std::string_view appId)
    : ledger_(Ledger::shared(module, appId)) {
  const std::lock_guard lock(ledger_->mutex);
  number_ = ++ledger_->begun;
  ledger_->running.insert(number_);
}

ReceiptRun::~ReceiptRun() {
  const std::lock_guard lock(ledger_->mutex);
  ledger_->releaseAll(number_);
  ledger_->running.erase(number_);
  // What was removed before a run began, it has never seen.
  const auto oldest = ledger_->running.empty() ? number_ + 1 : *ledger_->running.begin();
  std::erase_if(ledger_->entries, [&](const auto& entry) {
    return entry.second.acknowledged && *entry.second.acknowledged < oldest;
  });
}

bool ReceiptRun::claim(const std::string& uuid) {
  const auto now = QXPlatform::Clock::current().now();
  const std::lock_guard lock(ledger_->mutex);
  auto& entry = ledger_->entries[uuid];
  const bool isTaken =
      entry.claimedBy == number_ || (entry.claimedBy != Ledger::kNobody && now < entry.claimEnd);
  if (entry.acknowledged || isTaken) return false;
  entry.claimedBy = number_;
  entry.claimEnd = now + kClaimLifetime;
  return true;
}

void ReceiptRun::releaseAll() {
  const std::lock_guard lock(ledger_->mutex);
  ledger_->releaseAll(number_);
}

void ReceiptRun::acknowledge(std::span<const std::string> uuids) {
  const std::lock_guard lock(ledger_->mutex);
  for (const auto& uuid : uuids) {
    auto& acknowledged = ledger_->entries[uuid].acknowledged;
    if (!acknowledged) acknowledged = Ledger::kStillInFile;
  }
}

bool ReceiptRun::isAcknowledged(const std::string& uuid) const {
  const std::lock_guard lock(ledger_->mutex);
  const auto entry = ledger_->entries.find(uuid);
  return entry != ledger_->entries.end() && entry->second.acknowledged;
}

void ReceiptRun::removed(std::span<const std::string> uuids) {
  const std::lock_guard lock(ledger_->mutex);
  for (const auto& uuid : uuids) {
    const auto entry = ledger_->entries.find(uuid);
    if (entry == ledger_->entries.end() || !entry->second.acknowledged) continue;
    entry->second.acknowledged = std::min(*entry->second.acknowledged, ledger_->begun);
  }
}

}  // namespace QXExtensionSDK
