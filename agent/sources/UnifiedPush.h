#pragma once

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

  // Says again that the app is there, when it has been registered. To be called at every start.
  void renew();
  // Registers, or renews; calls back when the endpoint is known or cannot be had.
  void registerApp(Completion completion);
  // Calls back when the distributor has been told, or cannot be.
  void unregisterApp(std::function<void()> completion);
  // Empty until there is one.
  std::string endpoint() const { return registration_ ? registration_->endpoint : std::string(); }
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
  QXPlatform::Result<std::string> chooseDistributor() const;
  QXPlatform::Result<Registration> obtainRegistration();
  void sendRegistration();
  void sendOldRegistration();
  void sendOldUnregistration(const std::string& distributor, const std::string& token,
                             std::function<void()> completion);
  void finishRegistration(const QXPlatform::Result<std::string>& result);
  // Whether the sender is the distributor and the token is known; counts it otherwise.
  std::optional<Answer> refusal(const std::string& sender, const std::string& token);

  const Bus& bus_;
  const RegistrationStore& store_;
  PushReceiver& receiver_;
  const Setting setting_;
  std::optional<Registration> registration_;
  std::list<Completion> waiting_;
  std::function<void()> endpointChanged_;
  Timer patience_;
  Timer again_;
};

}  // namespace QXAgent
