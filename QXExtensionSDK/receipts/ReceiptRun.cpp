#include "QXExtensionSDK/receipts/ReceiptRun.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "AppGroupSDK/store/Trimming.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXExtensionSDK {

namespace {

// Of a text, however it is kept.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

}  // namespace

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
    auto known = entries.find(uuid);
    if (known == entries.end()) known = entries.try_emplace(std::string(uuid)).first;
    return known->second;
  }
  void releaseAll(std::uint64_t run) {
    for (auto each = entries.begin(); each != entries.end();) {
      Entry& entry = each->second;
      if (entry.claimedBy == run) entry.claimedBy = kNobody;
      const bool isOver = entry.claimedBy == kNobody && !entry.acknowledged;
      each = isOver ? entries.erase(each) : std::next(each);
    }
  }

  std::mutex mutex;  // guards what follows
  std::uint64_t begun = 0;
  std::set<std::uint64_t> running;
  std::unordered_map<std::string, Entry, TextHash, std::equal_to<>> entries;
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
  std::erase_if(ledger_->entries, [&](const auto& entry) {
    return entry.second.acknowledged && *entry.second.acknowledged < oldest;
  });
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

void ReceiptRun::acknowledge(std::span<const std::string_view> uuids) {
  const std::lock_guard lock(ledger_->mutex);
  for (const auto uuid : uuids) {
    auto& acknowledged = ledger_->entryOf(uuid).acknowledged;
    if (!acknowledged) acknowledged = Ledger::kStillInFile;
  }
}

bool ReceiptRun::isAcknowledged(std::string_view uuid) const {
  const std::lock_guard lock(ledger_->mutex);
  const auto entry = ledger_->entries.find(uuid);
  return entry != ledger_->entries.end() && entry->second.acknowledged;
}

void ReceiptRun::removed(std::span<const std::string_view> uuids) {
  const std::lock_guard lock(ledger_->mutex);
  for (const auto uuid : uuids) {
    const auto entry = ledger_->entries.find(uuid);
    if (entry == ledger_->entries.end() || !entry->second.acknowledged) continue;
    entry->second.acknowledged = std::min(*entry->second.acknowledged, ledger_->begun);
  }
}

}  // namespace QXExtensionSDK
