#include "QXExtensionSDK/receipts/ReceiptRun.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "AppGroupSDK/store/Trimming.h"
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

  Entry& entryOf(std::string_view uuid) {
    // Room first: each id has its entry, also when memory runs out.
    if (entries.size() == entries.capacity()) entries.reserve(2 * entries.size() + 1);
    const std::size_t number = uuids.add(uuid);
    if (number == entries.size()) entries.emplace_back();
    return entries[number];
  }
  Entry* find(std::string_view uuid) {
    const auto number = uuids.find(uuid);
    return number ? &entries[*number] : nullptr;
  }
  void releaseAll(std::uint64_t run) {
    for (Entry& entry : entries) {
      if (entry.claimedBy == run) entry.claimedBy = kNobody;
    }
    drop([](const Entry& entry) { return entry.claimedBy == kNobody && !entry.acknowledged; });
  }
  template <typename IsOver>
  void drop(const IsOver& isOver) {
    if (std::ranges::none_of(entries, isOver)) return;
    uuids.drop([&](std::size_t number) { return isOver(entries[number]); });
    std::erase_if(entries, isOver);
  }

  std::mutex mutex;  // guards what follows
  std::uint64_t begun = 0;
  std::set<std::uint64_t> running;
  ReceiptIds uuids;
  std::vector<Entry> entries;  // of each of uuids, by its number
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
  releaseAll();
  const std::lock_guard lock(ledger_->mutex);
  ledger_->running.erase(number_);
  // What was removed before a run began, it has never seen.
  const auto oldest = ledger_->running.empty() ? number_ + 1 : *ledger_->running.begin();
  ledger_->drop(
      [oldest](const Ledger::Entry& entry) { return entry.acknowledged && *entry.acknowledged < oldest; });
}

ReceiptRun::Claims::Claims(ReceiptRun& run)
    : run_(run), lock_(run.ledger_->mutex), now_(QXPlatform::Clock::current().now()) {}

bool ReceiptRun::Claims::add(std::string_view uuid) {
  Ledger::Entry& entry = run_.ledger_->entryOf(uuid);
  const bool isTaken =
      entry.claimedBy == run_.number_ || (entry.claimedBy != Ledger::kNobody && now_ < entry.claimEnd);
  if (entry.acknowledged || isTaken) return false;
  entry.claimedBy = run_.number_;
  entry.claimEnd = now_ + kClaimLifetime;
  run_.hasClaims_ = true;
  return true;
}

void ReceiptRun::releaseAll() {
  const std::lock_guard lock(ledger_->mutex);
  if (std::exchange(hasClaims_, false)) ledger_->releaseAll(number_);
}

void ReceiptRun::acknowledge(const ReceiptIds& uuids) {
  const std::lock_guard lock(ledger_->mutex);
  for (std::size_t number = 0; number < uuids.count(); ++number) {
    auto& acknowledged = ledger_->entryOf(uuids[number]).acknowledged;
    if (!acknowledged) acknowledged = Ledger::kStillInFile;
  }
}

ReceiptRun::Acknowledged::Acknowledged(const ReceiptRun& run) : run_(run), lock_(run.ledger_->mutex) {}

bool ReceiptRun::Acknowledged::contains(std::string_view uuid) const {
  const auto* entry = run_.ledger_->find(uuid);
  return entry != nullptr && entry->acknowledged;
}

void ReceiptRun::removed(const ReceiptIds& uuids) {
  const std::lock_guard lock(ledger_->mutex);
  for (std::size_t number = 0; number < uuids.count(); ++number) {
    auto* const entry = ledger_->find(uuids[number]);
    if (entry == nullptr || !entry->acknowledged) continue;
    entry->acknowledged = std::min(*entry->acknowledged, ledger_->begun);
  }
}

}  // namespace QXExtensionSDK
