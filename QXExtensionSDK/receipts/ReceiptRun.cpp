#include "QXExtensionSDK/receipts/ReceiptRun.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <set>
#include <unordered_map>

#include "AppGroupSDK/store/Trimming.h"
#include "QXPlatform/dispatch/Clock.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXExtensionSDK {

// What the runs on one file have in common.
struct ReceiptRun::Ledger {
  struct Claim {
    std::uint64_t run;
    QXPlatform::Clock::TimePoint end;
  };

  // The same object for every run on that file at the time.
  static std::shared_ptr<Ledger> shared(AppGroupSDK::ExtensionModuleName module, std::string_view appId);

  void releaseAll(std::uint64_t run) {
    std::erase_if(claims, [run](const auto& claim) { return claim.second.run == run; });
  }

  std::mutex mutex;  // guards what follows
  std::uint64_t begun = 0;
  std::set<std::uint64_t> running;
  std::unordered_map<std::string, Claim> claims;
  // With the last run that had begun when the receipt was removed; kStillInFile before.
  std::unordered_map<std::string, std::uint64_t> acknowledged;
};

namespace {

constexpr std::uint64_t kStillInFile = UINT64_MAX;

}  // namespace

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
  std::erase_if(ledger_->acknowledged, [&](const auto& entry) { return entry.second < oldest; });
}

bool ReceiptRun::claim(const std::string& uuid) {
  const auto now = QXPlatform::Clock::current().now();
  const std::lock_guard lock(ledger_->mutex);
  if (ledger_->acknowledged.contains(uuid)) return false;
  const Ledger::Claim own{number_, now + kClaimLifetime};
  const auto [claim, isNew] = ledger_->claims.try_emplace(uuid, own);
  if (!isNew && claim->second.run != number_ && now < claim->second.end) return false;
  claim->second = own;
  return true;
}

void ReceiptRun::releaseAll() {
  const std::lock_guard lock(ledger_->mutex);
  ledger_->releaseAll(number_);
}

void ReceiptRun::acknowledge(std::span<const std::string> uuids) {
  const std::lock_guard lock(ledger_->mutex);
  for (const auto& uuid : uuids) ledger_->acknowledged.try_emplace(uuid, kStillInFile);
}

bool ReceiptRun::isAcknowledged(const std::string& uuid) const {
  const std::lock_guard lock(ledger_->mutex);
  return ledger_->acknowledged.contains(uuid);
}

void ReceiptRun::removed(std::span<const std::string> uuids) {
  const std::lock_guard lock(ledger_->mutex);
  for (const auto& uuid : uuids) {
    const auto entry = ledger_->acknowledged.find(uuid);
    if (entry != ledger_->acknowledged.end()) entry->second = std::min(entry->second, ledger_->begun);
  }
}

}  // namespace QXExtensionSDK
