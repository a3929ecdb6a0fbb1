#include "tools/qx/SendCommand.h"

#include <cstdint>
#include <future>
#include <iostream>
#include <memory>
#include <utility>

#include "QXPlatform/network/URLSession.h"
#include "agent/webpush/VAPID.h"
#include "tools/qx/EachPush.h"
#include "tools/qx/Results.h"
#include "tools/qx/WebPushFiles.h"

namespace qx {

namespace {

using QXPlatform::Data;
using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;
using Response = std::shared_ptr<const QXPlatform::HTTPURLResponse>;

Result<QXPlatform::URLRequest> sealedRequest(const WebPushReceiver& receiver, const WebPushSender& sender,
                                             int ttlSeconds, std::string body) {
  const auto now = std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now());
  const auto expiry = now + QXAgent::kLongestVAPIDValidity / 2;
  const auto authorization = QXAgent::vapidAuthorization(
      sender.privateKey.view(), {QXAgent::vapidAudience(receiver.endpoint), sender.subject, expiry});
  if (!authorization) return Error{"the sender's key: " + authorization.error().message};
  QXPlatform::URLRequest request(receiver.endpoint);
  request.httpMethod = "POST";
  request.setValueForHTTPHeaderField("aes128gcm", "Content-Encoding");
  request.setValueForHTTPHeaderField("application/octet-stream", "Content-Type");
  request.setValueForHTTPHeaderField(std::to_string(ttlSeconds), "TTL");
  request.setValueForHTTPHeaderField(*authorization, "Authorization");
  request.httpBody = Data(std::move(body));
  return request;
}

Result<Response> post(QXPlatform::URLRequest request) {
  QXPlatform::URLSessionConfiguration configuration;
  configuration.timeoutIntervalForResource = std::chrono::minutes(1);
  QXPlatform::URLSession session(configuration);
  std::promise<Result<Response>> answer;
  session
      .dataTask(std::move(request),
                [&](const auto&, const auto& response, const auto& error) {
                  auto http = std::dynamic_pointer_cast<const QXPlatform::HTTPURLResponse>(response);
                  answer.set_value(error ? Result<Response>(Error{error->message}) : std::move(http));
                })
      ->resume();
  return answer.get_future().get();
}

// What an answer means for who sends; empty when the push is taken.
std::string refusalOf(const QXPlatform::HTTPURLResponse& response) {
  const int status = response.statusCode();
  std::string answered = "the push service answered " + std::to_string(status);
  if (status >= 200 && status < 300) return "";
  if (status == 404 || status == 410) return answered + ": the subscription is gone";
  if (status == 413) return answered + ": the push is too large for it";
  if (status == 401 || status == 403) return answered + ": it does not take pushes of this sender";
  if (status != 429) return answered;
  const auto seconds = response.valueForHTTPHeaderField("Retry-After");
  return answered + ": too many pushes" + (seconds ? "; wait: " + std::string(*seconds) : "");
}

class Sending {
 public:
  Sending(const SimulatorOptions& simulator, const SendOptions& options, WebPushReceiver receiver)
      : simulator_(simulator), options_(options), receiver_(std::move(receiver)) {}

  Result<bool> send(const PushDocument& push, const PushPlace& place) {
    const std::string message = push.sealed().description();
    auto body = QXAgent::sealMessage(receiver_.subscription, message);
    if (!body) return body.error();
    if (!options_.sealOnly) return post(*std::move(body));
    if (place.isOneOfSeveral) return Error{"only one push can be written"};
    std::cout << *body << std::flush;
    return true;
  }

 private:
  Result<bool> post(std::string body) {
    if (!sender_) {
      auto sender = readOrMakeSender(options_.vapid);
      if (!sender) return sender.error();
      sender_ = *std::move(sender);
    }
    const auto size = static_cast<std::int64_t>(body.size());
    auto request = sealedRequest(receiver_, *sender_, options_.ttlSeconds, std::move(body));
    if (!request) return request.error();
    const auto response = qx::post(*std::move(request));
    if (!response) return response.error();
    const auto& answer = **response;
    printResult(simulator_, Dictionary{{"status", std::int64_t{answer.statusCode()}}, {"sealedBytes", size}});
    const std::string refusal = refusalOf(answer);
    if (!refusal.empty()) return Error{refusal};
    return true;
  }

  const SimulatorOptions& simulator_;
  const SendOptions& options_;
  const WebPushReceiver receiver_;
  std::optional<WebPushSender> sender_;  // read when it is first needed
};

}  // namespace

int runSend(const SimulatorOptions& simulator, const SendOptions& options) {
  auto receiver = readSubscription(options.subscription);
  if (!receiver) return fail("send", receiver.error().message);
  Sending sending(simulator, options, *std::move(receiver));
  const auto examine = [&](const std::string& text, const PushPlace& place) -> PushReport {
    return [&, push = PushDocument::parse(text), place] {
      const auto sent = push ? sending.send(*push, place) : push.error();
      if (!sent) fail("send", place.name + ": " + sent.error().message);
      return sent.ok();
    };
  };
  return forEachPush("send", {.files = {options.push}}, examine);
}

}  // namespace qx
