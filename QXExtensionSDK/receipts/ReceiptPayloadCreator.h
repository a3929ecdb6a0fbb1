#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QXExtensionSDK/receipts/AppDeviceInfoProvider.h"
#include "QXExtensionSDK/receipts/ReceiptListText.h"
#include "QXPlatform/foundation/ValueArena.h"

namespace QXExtensionSDK {

// The items of a payload, all in a few large allocations: a full batch has some 1,500 nodes.
class ReceiptItems {
 public:
  // One entry of an event; without a text it is left out.
  struct Field {
    std::string_view key;  // a literal
    std::optional<std::string_view> text;
  };

  explicit ReceiptItems(std::size_t expectedCount);

  // Appends {"eventType", "event"}. There is the least to sort when the fields come in the order of their
  // keys.
  void add(int eventType, std::initializer_list<Field> event);
  void add(std::string_view eventType, std::initializer_list<Field> event);
  // The list that wraps the items. This object must not be used afterwards.
  QXPlatform::Value nodes() &&;

 private:
  using RawValue = QXPlatform::ValueArena::RawValue;
  using RawEntry = QXPlatform::ValueArena::RawEntry;

  RawValue text(std::string_view text) { return arena_.string(arena_.store(text)); }
  void add(const RawValue& eventType, std::initializer_list<Field> event);

  QXPlatform::ValueArena arena_;
  std::vector<RawValue> items_;
  std::vector<RawEntry> fields_;  // of the event in the making
};

// Turns receipts into the body of one module's request; a module adds its event and what surrounds them.
// Used from one thread at a time.
class ReceiptPayloadCreator {
 public:
  explicit ReceiptPayloadCreator(std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider);
  virtual ~ReceiptPayloadCreator() = default;
  // A receipt for which a value is not stored is skipped with an error line. Nothing when there are no
  // receipts, or when a body without events could be sent: it would be acknowledged, and they would be gone.
  std::optional<QXPlatform::Dictionary> createPayload(const Receipts& receipts) const;

 protected:
  using Info = AppGroupSDK::AppDeviceInfo;

  // 2024-05-01T09:03:07.250Z; nothing for an instant that has no such form.
  static std::optional<std::string> formatted(double secondsSince1970);

 private:
  // What an event lacks to be made, as named in the error line; nothing when it can be made.
  virtual std::optional<std::string_view> missingField(const std::optional<Info>& info) const = 0;
  // How the error line begins.
  virtual std::string_view eventName() const = 0;
  virtual void addEvent(ReceiptItems& items, const AppGroupSDK::DeliveryReceiptPNModel& receipt,
                        const Info& info, const std::optional<std::string>& receiptDateUtc) const = 0;
  virtual QXPlatform::Dictionary makeBody(const Info& info, QXPlatform::Value nodes) const = 0;
  // What is tried when no event can be made; nothing where the back end could take it.
  virtual std::optional<QXPlatform::Dictionary> makeBodyWithoutEvents() const { return std::nullopt; }

  const std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider_;
};

}  // namespace QXExtensionSDK
