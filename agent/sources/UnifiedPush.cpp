#include "agent/sources/UnifiedPush.h"

#include <set>
#include <utility>

#include "QXPlatform/foundation/URL.h"
#include "QXPlatform/foundation/UUID.h"
#include "agent/sources/Distributors.h"
#include "agent/sources/WebPushProgram.h"

namespace QXAgent {

namespace {

using QXPlatform::Error;
using QXPlatform::Result;

constexpr const char* kPath = "/org/unifiedpush/Distributor";
constexpr const char* kInterface = "org.unifiedpush.Distributor2";
constexpr const char* kOldInterface = "org.unifiedpush.Distributor1";
constexpr std::size_t kLongestEndpoint = 1'000;
constexpr std::size_t kLongestId = 256;
constexpr std::size_t kKeyPart = 16;
constexpr std::chrono::seconds kLongestRegistration{20};
constexpr std::chrono::seconds kLongestUnregistration{10};
constexpr std::chrono::seconds kBeforeRegisteringAgain{10};

// Tells a repetition: the id, which is the distributor's own for this registration, or salt and tag, which no
// two sealed messages share.
std::string keyOf(const std::string& distributor, const UnifiedPush::Message& message) {
  if (!message.id.empty() && message.id.size() <= kLongestId)
    return "id:" + distributor + ' ' + message.token + ' ' + message.id;
  if (message.bytes.size() < 2 * kKeyPart) return message.bytes;
  return message.bytes.substr(0, kKeyPart) + message.bytes.substr(message.bytes.size() - kKeyPart);
}

bool isUnknownMethod(sd_bus_message& reply) {
  return sd_bus_message_is_method_error(&reply, SD_BUS_ERROR_UNKNOWN_METHOD) > 0 ||
         sd_bus_message_is_method_error(&reply, SD_BUS_ERROR_UNKNOWN_INTERFACE) > 0;
}

}  // namespace

UnifiedPush::UnifiedPush(EventLoop& loop, const Bus& bus, const RegistrationStore& store,
                         PushReceiver& receiver, Setting setting)
    : bus_(bus),
      store_(store),
      receiver_(receiver),
      setting_(std::move(setting)),
      registration_(store.load()),
      patience_(loop, [this] { finishRegistration(Error{"the distributor has given no endpoint"}); }),
      again_(loop, [this] { renew(); }) {}

void UnifiedPush::renew() {
  if (registration_) registerApp([](const auto&) {});
}

void UnifiedPush::registerApp(Completion completion) {
  waiting_.push_back(std::move(completion));
  if (patience_.isRunning()) return;
  auto registration = obtainRegistration();
  if (!registration) return finishRegistration(registration.error());
  registration_ = *std::move(registration);
  patience_.start(kLongestRegistration);
  sendRegistration();
}

Result<Registration> UnifiedPush::obtainRegistration() {
  auto distributor = chooseDistributor();
  if (!distributor) return distributor.error();
  auto registration = registration_;
  if (!registration) {
    auto keys = makeKeysApart();
    if (!keys) return Error{"no keys can be made"};
    registration = Registration{{}, QXPlatform::makeUUIDString(), {}, *std::move(keys)};
  }
  if (registration->distributor != *distributor) {
    registration->distributor = *std::move(distributor);
    registration->endpoint.clear();
  }
  if (!store_.save(*registration)) return Error{"the registration cannot be kept"};
  return *std::move(registration);
}

Result<std::string> UnifiedPush::chooseDistributor() const {
  const auto names = distributorNames(bus_);
  if (setting_.distributor) {
    if (names.contains(*setting_.distributor)) return *setting_.distributor;
    return Error{"the distributor " + *setting_.distributor + " is not there"};
  }
  if (registration_ && names.contains(registration_->distributor)) return registration_->distributor;
  if (names.size() == 1) return *names.begin();
  if (names.empty()) return Error{"no distributor is there"};
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return Error{"several distributors are there, choose one at installation: " + list};
}

void UnifiedPush::sendRegistration() {
  auto call = bus_.newCall(registration_->distributor.c_str(), kPath, kInterface, "Register");
  sd_bus_message_append(call.get(), "a{sv}", 3, "service", "s", setting_.connector.c_str(), "token", "s",
                        registration_->token.c_str(), "description", "s", setting_.appName.c_str());
  bus_.send(std::move(call), [this](sd_bus_message& reply) {
    if (isUnknownMethod(reply)) return sendOldRegistration();
    if (const auto error = errorOf(reply))
      return finishRegistration(Error{"the distributor failed: " + *error});
    const auto fields = readFields(reply);
    if (fields.text("success") != "REGISTRATION_SUCCEEDED")
      finishRegistration(Error{"the distributor refused: " + fields.text("reason")});
  });
}

void UnifiedPush::sendOldRegistration() {
  auto call = bus_.newCall(registration_->distributor.c_str(), kPath, kOldInterface, "Register");
  sd_bus_message_append(call.get(), "sss", setting_.connector.c_str(), registration_->token.c_str(),
                        setting_.appName.c_str());
  bus_.send(std::move(call), [this](sd_bus_message& reply) {
    if (const auto error = errorOf(reply))
      return finishRegistration(Error{"the distributor failed: " + *error});
    const char* result = nullptr;
    const char* reason = nullptr;
    if (sd_bus_message_read(&reply, "ss", &result, &reason) <= 0)
      return finishRegistration(Error{"the distributor answered nonsense"});
    const std::string text(result);
    if (text != "REGISTRATION_SUCCEEDED" && text != "NEW_ENDPOINT")
      finishRegistration(Error{"the distributor refused: " + std::string(reason)});
  });
}

void UnifiedPush::finishRegistration(const Result<std::string>& result) {
  patience_.stop();
  for (const Completion& completion : std::exchange(waiting_, {})) completion(result);
}

void UnifiedPush::unregisterApp(std::function<void()> completion) {
  const auto registration = std::exchange(registration_, std::nullopt);
  store_.remove();
  if (!registration) return completion();
  auto call = bus_.newCall(registration->distributor.c_str(), kPath, kInterface, "Unregister");
  sd_bus_message_append(call.get(), "a{sv}", 1, "token", "s", registration->token.c_str());
  bus_.send(
      std::move(call),
      [this, registration, completion = std::move(completion)](sd_bus_message& reply) {
        if (!isUnknownMethod(reply)) return completion();
        sendOldUnregistration(registration->distributor, registration->token, completion);
      },
      kLongestUnregistration);
  if (endpointChanged_) endpointChanged_();
}

void UnifiedPush::sendOldUnregistration(const std::string& distributor, const std::string& token,
                                        std::function<void()> completion) {
  auto call = bus_.newCall(distributor.c_str(), kPath, kOldInterface, "Unregister");
  sd_bus_message_append(call.get(), "s", token.c_str());
  bus_.send(
      std::move(call), [completion = std::move(completion)](sd_bus_message&) { completion(); },
      kLongestUnregistration);
}

std::optional<UnifiedPush::Answer> UnifiedPush::refusal(const std::string& sender, const std::string& token) {
  const auto owner = registration_ ? bus_.ownerOf(registration_->distributor) : "";
  if (!owner) return Answer::tryAgain;
  if (sender.empty() || owner != sender) {
    receiver_.refuse("a call from another program than the distributor");
    return Answer::notAllowed;
  }
  if (token == registration_->token) return std::nullopt;
  receiver_.refuse("a call with an unknown token");
  return Answer::done;
}

UnifiedPush::Answer UnifiedPush::message(const std::string& sender, const Message& message) {
  if (const auto refused = refusal(sender, message.token)) return *refused;
  if (message.bytes.empty() || message.bytes.size() > kMostSealedBytes) {
    receiver_.refuse("a message of " + std::to_string(message.bytes.size()) + " bytes");
    return Answer::done;
  }
  const auto opened = openApart(registration_->keys, message.bytes);
  if (!opened) return Answer::tryAgain;
  if (!*opened) {
    receiver_.refuse("a message that does not open: " + opened->error().message);
    return Answer::done;
  }
  return receiver_.receive(keyOf(registration_->distributor, message), **opened) ? Answer::done
                                                                                 : Answer::tryAgain;
}

UnifiedPush::Answer UnifiedPush::newEndpoint(const std::string& sender, const std::string& token,
                                             const std::string& endpoint) {
  if (const auto refused = refusal(sender, token)) return *refused;
  if (endpoint.size() > kLongestEndpoint || !QXPlatform::URL::parse(endpoint)) return Answer::done;
  const bool isNew = registration_->endpoint != endpoint;
  registration_->endpoint = endpoint;
  if (isNew) store_.save(*registration_);
  finishRegistration(endpoint);
  if (isNew && endpointChanged_) endpointChanged_();
  return Answer::done;
}

UnifiedPush::Answer UnifiedPush::unregistered(const std::string& sender, const std::string& token) {
  // What we have asked for ourselves.
  if (!registration_) return Answer::done;
  if (const auto refused = refusal(sender, token)) return *refused;
  registration_->endpoint.clear();
  store_.save(*registration_);
  if (endpointChanged_) endpointChanged_();
  // Not at once, lest a distributor that is out of its mind be asked for ever.
  again_.start(kBeforeRegisteringAgain);
  return Answer::done;
}

}  // namespace QXAgent
