#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "QXExtensionSDK/receipts/DeliveryReceiptDataParser.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptRepository.h"
#include "QXExtensionSDK/receipts/ReceiptPayloadCreator.h"

namespace QXExtensionSDK {

// Keeps and sends the receipts of one messaging module during one push. Calls on one object must not overlap.
class DeliveryReceiptManaging {
 public:
  virtual ~DeliveryReceiptManaging() = default;

  // Blocks until the receipt is in its file; false when it is not.
  virtual bool storeReceipt(const DeliveryReceiptData& data) = 0;
  // Returns once the module's pending receipts are on their way. The completion is called when their outcome
  // is recorded, on a background queue, also when this object is gone; right away when there is nothing to
  // send (true) or no request could be made (false). An answer that is no HTTP answer never completes.
  virtual void sendReceipts(ReceiptCompletion completion) = 0;
  // The class's name, for log lines.
  virtual std::string_view description() const = 0;
};

// What the managers of both modules do alike.
class ReceiptManager : public DeliveryReceiptManaging {
 public:
  bool storeReceipt(const DeliveryReceiptData& data) final;
  void sendReceipts(ReceiptCompletion completion) final;

  // The batch to send; nothing, after a log line, when there is none.
  std::optional<Receipts> pendingReceipts();
  void sendReceipts(Receipts receipts, ReceiptCompletion completion);

 protected:
  using Info = AppGroupSDK::AppDeviceInfo;

  // `shortName`: the module's name in log lines.
  ReceiptManager(std::string_view shortName, std::shared_ptr<DeliveryReceiptRepository> repositoryManager,
                 std::unique_ptr<const ReceiptPayloadCreator> payloadCreator,
                 std::unique_ptr<const DeliveryReceiptHandling> receiptHandler,
                 std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider);

  // Nothing, after an error line, when none is stored or what is stored is no web address.
  static std::optional<QXPlatform::URL> makeBaseURL(const std::optional<Info>& info);
  void logMissingHeaders() const;

 private:
  // Nothing, after error lines, when a value that the request needs is not stored.
  virtual std::unique_ptr<const ServiceProtocol> makeRequest(const std::optional<Info>& info,
                                                             QXPlatform::Dictionary payload) const = 0;

  const std::string_view shortName_;
  // Shared with the completions of requests in flight, which may outlive this object.
  const std::shared_ptr<DeliveryReceiptRepository> repositoryManager_;
  const std::unique_ptr<const ReceiptPayloadCreator> payloadCreator_;
  const std::unique_ptr<const DeliveryReceiptHandling> receiptHandler_;
  const std::shared_ptr<AppDeviceInfoProvider> appDeviceInfoProvider_;
};

// A module's request: a POST under the base URL. `Header` is a record with the `path` and, by toDictionary(),
// the header fields. Immutable.
template <typename Header>
class ReceiptRequest final : public ServiceProtocol {
 public:
  ReceiptRequest(QXPlatform::URL baseURL, Header header, QXPlatform::Dictionary body)
      : baseURL_(std::move(baseURL)), header_(std::move(header)), body_(std::move(body)) {}

  QXPlatform::URL url() const override { return baseURL_.appendingPathComponent(header_.path); }
  HTTPMethod method() const override { return HTTPMethod::post; }
  Headers headers() const override { return header_.toDictionary(); }
  std::optional<QXPlatform::Dictionary> body() const override { return body_; }

 private:
  const QXPlatform::URL baseURL_;
  const Header header_;
  const QXPlatform::Dictionary body_;
};

// A manager whose requests bear this header.
template <typename Header>
class ModuleReceiptManager : public ReceiptManager {
 protected:
  using ReceiptManager::ReceiptManager;

 private:
  // Nothing, after an error line, when a value of it is not stored.
  virtual std::optional<Header> makeHeader(const std::optional<Info>& info) const = 0;

  std::unique_ptr<const ServiceProtocol> makeRequest(const std::optional<Info>& info,
                                                     QXPlatform::Dictionary payload) const final {
    auto header = makeHeader(info);
    auto baseURL = makeBaseURL(info);
    if (!baseURL) return nullptr;
    if (header) {
      return std::make_unique<const ReceiptRequest<Header>>(*std::move(baseURL), *std::move(header),
                                                            std::move(payload));
    }
    logMissingHeaders();
    return nullptr;
  }
};

}  // namespace QXExtensionSDK
