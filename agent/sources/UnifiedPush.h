#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <string>

#include "QXPlatform/foundation/Result.h"
#include "agent/loop/Bus.h"
#include "agent/sources/PushReceiver.h"
#include "agent/spool/RegistrationStore.h"

namespace QXAgent {

// Pushes that the user's distributor passes on over the bus, sealed for this app.
class UnifiedPush {
 public:
  struct Setting {
    std::string connector;  // the bus name under which the distributor knows the app
    std::string appName;
    std::optional<std::string> distributor;  // the one to be used, whatever others there are
  };
  // The endpoint, or why there is none.
  using Completion = std::function<void(QXPlatform::Result<std::string>)>;

  // Answers the distributor from now on.
  UnifiedPush(EventLoop& loop, const Bus& bus, const RegistrationStore& store, PushReceiver& receiver,
              Setting setting);
  UnifiedPush(const UnifiedPush&) = delete;
  UnifiedPush& operator=(const UnifiedPush&) = delete;

  // Says again that the app is there, when it has been registered or was to be. To be called at every start.
  void renew();
  // Registers, or renews; calls back when the endpoint is known or cannot be had. What failed is tried again,
  // ever less often, and when a distributor comes.
  void registerApp(Completion completion);
  // Calls back when the distributor has been told, or cannot be. False, without calling back, when it cannot
  // be kept and nothing has changed.
  bool unregisterApp(const std::function<void()>& completion);
  // Empty until there is one.
  std::string endpoint() const { return registered_.current ? registered_.current->endpoint : std::string(); }
  // Whether an answer of a distributor is waited for.
  bool isBusy() const { return isRegistering() || leaving_ > 0; }
  void setEndpointHandler(std::function<void()> handler) { endpointChanged_ = std::move(handler); }

  // What the distributor says; each answers whether the call is to be answered as done.
  struct Message {
    std::string token;
    std::string bytes;
    std::string id;  // empty: none
  };
  enum class Answer { done, notAllowed, tryAgain };
  Answer message(const std::string& sender, const Message& message);
  Answer newEndpoint(const std::string& sender, const std::string& token, const std::string& endpoint);
  Answer unregistered(const std::string& sender, const std::string& token);

 private:
  struct Caller {
    const Registration* registration;  // the one that it speaks of; null: it is refused
    Answer refusal;
  };

  bool isRegistering() const { return patience_.isRunning(); }
  QXPlatform::Result<std::string> chooseDistributor() const;
  // Sees to it that there is a registration for the distributor of choice; returns why there is none.
  std::optional<QXPlatform::Error> prepare();
  // The one that is to have an endpoint. REQUIRES: there is one.
  const Registration& sought() const { return registered_.next ? *registered_.next : *registered_.current; }
  void sendRegistration();
  void sendOldRegistration();
  // Whether that is still what is waited for.
  bool awaits(const std::string& token) const { return isRegistering() && sought().token == token; }
  void finishRegistration(const QXPlatform::Result<std::string>& result);
  // The registration is taken to hold when nothing newer is known: not all say the endpoint again.
  void finishRenewal();
  void askAgainLater();
  // Tells a distributor that the app listens there no more.
  void leave(const Registration& registration, std::function<void()> completion);
  void sendOldUnregistration(const Registration& registration, std::function<void()> completion);
  // Counts a call from another program than the distributor, or with an unknown token.
  Caller callerOf(const std::string& sender, const std::string& token);

  const Bus& bus_;
  const RegistrationStore& store_;
  PushReceiver& receiver_;
  const Setting setting_;
  Registrations registered_;
  std::string left_;  // the token of what was ended last
  int leaving_ = 0;   // how many distributors have not yet answered to that
  std::list<Completion> waiting_;
  std::function<void()> endpointChanged_;
  Timer patience_;
  std::chrono::seconds pause_{0};  // before the next attempt; grows until pushes come
  Timer again_;
};

}  // namespace QXAgent
