#include "agent/sources/UnifiedPush.h"

#include <algorithm>
#include <array>
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
constexpr std::chrono::seconds kLongestPause{600};

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
      registered_(store.load()),
      patience_(loop, [this] { finishRegistration(Error{"the distributor has given no endpoint"}); }),
      again_(loop, [this] { registerApp([](const auto&) {}); }) {
  bus_.onOwnerChangeBelow(kDistributors, [this](const std::string& owner) {
    if (owner.empty() || !again_.isRunning()) return;
    pause_ = std::chrono::seconds(0);
    registerApp([](const auto&) {});
  });
}

void UnifiedPush::renew() {
  if (registered_.isWanted || registered_.current || registered_.next) registerApp([](const auto&) {});
}

void UnifiedPush::registerApp(Completion completion) {
  waiting_.push_back(std::move(completion));
  if (isRegistering()) return;
  again_.stop();
  if (const auto problem = prepare()) return finishRegistration(*problem);
  patience_.start(kLongestRegistration);
  sendRegistration();
}

std::optional<Error> UnifiedPush::prepare() {
  const Error notKept{"the registration cannot be kept"};
  // Kept before there is anybody to register with.
  if (!std::exchange(registered_.isWanted, true) && !store_.save(registered_)) {
    registered_.isWanted = false;
    return notKept;
  }
  const auto distributor = chooseDistributor();
  if (!distributor) return distributor.error();
  auto& [current, next, isWanted] = registered_;
  const auto before = next;
  if (current && current->distributor == *distributor) {
    next.reset();
  } else if (!next || next->distributor != *distributor) {
    const auto keys = makeKeysApart();
    if (!keys) return keys.error();
    next = Registration{*distributor, QXPlatform::makeUUIDString(), {}, *keys};
  }
  if (before && (!next || next->token != before->token)) leave(*before, [] {});
  if (!store_.save(registered_)) return notKept;
  return std::nullopt;
}

Result<std::string> UnifiedPush::chooseDistributor() const {
  const auto names = distributorNames(bus_);
  if (setting_.distributor) {
    if (names.contains(*setting_.distributor)) return *setting_.distributor;
    return Error{"the distributor " + *setting_.distributor + " is not there"};
  }
  const auto& current = registered_.current;
  if (current && names.contains(current->distributor)) return current->distributor;
  if (names.size() == 1) return *names.begin();
  if (names.empty()) return Error{"no distributor is there"};
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return Error{"several distributors are there, choose one at installation: " + list};
}

void UnifiedPush::sendRegistration() {
  const auto& [distributor, token, endpoint, keys] = sought();
  auto call = bus_.newCall(distributor.c_str(), kPath, kInterface, "Register");
  sd_bus_message_append(call.get(), "a{sv}", 3, "service", "s", setting_.connector.c_str(), "token", "s",
                        token.c_str(), "description", "s", setting_.appName.c_str());
  bus_.send(std::move(call), [this, token = token](sd_bus_message& reply) {
    if (!awaits(token)) return;
    if (isUnknownMethod(reply)) return sendOldRegistration();
    if (const auto error = errorOf(reply))
      return finishRegistration(Error{"the distributor failed: " + *error});
    const auto fields = readFields(reply);
    if (fields.text("success") != "REGISTRATION_SUCCEEDED")
      return finishRegistration(Error{"the distributor refused: " + fields.text("reason")});
    finishRenewal();
  });
}

void UnifiedPush::sendOldRegistration() {
  const auto& [distributor, token, endpoint, keys] = sought();
  auto call = bus_.newCall(distributor.c_str(), kPath, kOldInterface, "Register");
  sd_bus_message_append(call.get(), "sss", setting_.connector.c_str(), token.c_str(),
                        setting_.appName.c_str());
  bus_.send(std::move(call), [this, token = token](sd_bus_message& reply) {
    if (!awaits(token)) return;
    if (const auto error = errorOf(reply))
      return finishRegistration(Error{"the distributor failed: " + *error});
    const char* result = nullptr;
    const char* reason = nullptr;
    if (sd_bus_message_read(&reply, "ss", &result, &reason) <= 0)
      return finishRegistration(Error{"the distributor answered nonsense"});
    const std::string text(result);
    if (text == "REGISTRATION_SUCCEEDED") return finishRenewal();
    if (text != "NEW_ENDPOINT") finishRegistration(Error{"the distributor refused: " + std::string(reason)});
  });
}

void UnifiedPush::finishRenewal() {
  if (const std::string endpoint = sought().endpoint; !endpoint.empty()) finishRegistration(endpoint);
}

void UnifiedPush::askAgainLater() {
  pause_ = std::clamp(2 * pause_, kBeforeRegisteringAgain, kLongestPause);
  again_.start(pause_);
}

void UnifiedPush::finishRegistration(const Result<std::string>& result) {
  patience_.stop();
  again_.stop();
  if (!result) {
    receiver_.report(result.error().message);
    askAgainLater();
  }
  for (const Completion& completion : std::exchange(waiting_, {})) completion(result);
  receiver_.rested();
}

bool UnifiedPush::unregisterApp(const std::function<void()>& completion) {
  if (!store_.save({})) return false;
  const auto [current, next, wasWanted] = std::exchange(registered_, {});
  if (isRegistering()) finishRegistration(Error{"the registration has been ended"});
  again_.stop();
  if (next) leave(*next, current ? [] {} : completion);
  if (current) leave(*current, completion);
  if (!current && !next) completion();
  if (current && endpointChanged_) endpointChanged_();
  return true;
}

void UnifiedPush::leave(const Registration& registration, std::function<void()> completion) {
  left_ = registration.token;
  ++leaving_;
  auto call = bus_.newCall(registration.distributor.c_str(), kPath, kInterface, "Unregister");
  sd_bus_message_append(call.get(), "a{sv}", 1, "token", "s", registration.token.c_str());
  auto end = [this, completion = std::move(completion)] {
    --leaving_;
    completion();
    receiver_.rested();
  };
  bus_.send(
      std::move(call),
      [this, registration, end = std::move(end)](sd_bus_message& reply) {
        isUnknownMethod(reply) ? sendOldUnregistration(registration, end) : end();
      },
      kLongestUnregistration);
}

void UnifiedPush::sendOldUnregistration(const Registration& registration, std::function<void()> completion) {
  auto call = bus_.newCall(registration.distributor.c_str(), kPath, kOldInterface, "Unregister");
  sd_bus_message_append(call.get(), "s", registration.token.c_str());
  bus_.send(
      std::move(call), [completion = std::move(completion)](sd_bus_message&) { completion(); },
      kLongestUnregistration);
}

UnifiedPush::Caller UnifiedPush::callerOf(const std::string& sender, const std::string& token) {
  bool isDistributor = false;
  for (const auto* registration : std::array{&registered_.current, &registered_.next}) {
    if (!*registration) continue;
    const auto owner = bus_.ownerOf((*registration)->distributor);
    if (!owner) return {nullptr, Answer::tryAgain};
    if (sender.empty() || owner != sender) continue;
    isDistributor = true;
    if (token == (*registration)->token) return {&**registration, Answer::done};
  }
  receiver_.refuse(isDistributor ? "a call with an unknown token"
                                 : "a call from another program than the distributor");
  return {nullptr, isDistributor ? Answer::done : Answer::notAllowed};
}

UnifiedPush::Answer UnifiedPush::message(const std::string& sender, const Message& message) {
  const auto [registration, refusal] = callerOf(sender, message.token);
  if (registration == nullptr) return refusal;
  if (message.bytes.empty() || message.bytes.size() > kMostSealedBytes) {
    receiver_.refuse("a message of " + std::to_string(message.bytes.size()) + " bytes");
    return Answer::done;
  }
  const auto opened = openApart(registration->keys, message.bytes);
  if (opened) {
    pause_ = std::chrono::seconds(0);
    return receiver_.receive(keyOf(registration->distributor, message), *opened) ? Answer::done
                                                                                 : Answer::tryAgain;
  }
  const auto& [reason, isFinal] = opened.error();
  isFinal ? receiver_.refuse(reason) : receiver_.report(reason);
  return isFinal ? Answer::done : Answer::tryAgain;
}

UnifiedPush::Answer UnifiedPush::newEndpoint(const std::string& sender, const std::string& token,
                                             const std::string& endpoint) {
  const auto [registration, refusal] = callerOf(sender, token);
  if (registration == nullptr) return refusal;
  if (endpoint.size() > kLongestEndpoint || !QXPlatform::URL::parse(endpoint)) return Answer::done;
  const bool isSought = registration == &sought();
  const Registrations before = registered_;
  auto& [current, next, isWanted] = registered_;
  const bool isNext = next && registration == &*next;
  if (isNext) current = std::exchange(next, std::nullopt);
  const bool isNew = isNext || current->endpoint != endpoint;
  current->endpoint = endpoint;
  if (isNew && !store_.save(registered_)) {
    registered_ = before;
    return Answer::tryAgain;
  }
  // Until now pushes have come from there.
  if (isNext && before.current) leave(*before.current, [] {});
  if (isSought) finishRegistration(endpoint);
  if (isNew && endpointChanged_) endpointChanged_();
  return Answer::done;
}

UnifiedPush::Answer UnifiedPush::unregistered(const std::string& sender, const std::string& token) {
  // What we have asked for ourselves.
  if (token == left_ || (!registered_.current && !registered_.next)) return Answer::done;
  const auto [registration, refusal] = callerOf(sender, token);
  if (registration == nullptr) return refusal;
  // Ever later, lest a distributor that is out of its mind be asked for ever.
  askAgainLater();
  if (!registered_.current || registration != &*registered_.current) return Answer::done;
  const std::string endpoint = std::exchange(registered_.current->endpoint, {});
  if (!store_.save(registered_)) {
    registered_.current->endpoint = endpoint;
    return Answer::tryAgain;
  }
  if (endpointChanged_) endpointChanged_();
  return Answer::done;
}

}  // namespace QXAgent
