#pragma once

#include <chrono>
#include <cstdint>
#include <set>
#include <string>
#include <utility>

#include "agent/loop/Bus.h"
#include "agent/presentation/Presenter.h"

namespace QXAgent {

// How the app presents itself.
struct AppIdentity {
  std::string app;  // its application id, and the name of its desktop entry
  std::string name;
  std::string icon;
  std::filesystem::path sounds;  // where its sound files lie; empty: it has none
};

// Presents through org.freedesktop.Notifications, leaving out what the server there cannot do.
class NotificationServer final : public Presenter {
 public:
  // `patience`: how long a server may take over one notification before it is asked whether it is well.
  NotificationServer(EventLoop& loop, const Bus& bus, AppIdentity identity, PresenterEvents events,
                     std::chrono::microseconds patience = std::chrono::seconds(60));

  const std::string& session() const override { return session_; }
  bool knowsSession() const override { return knowsOwner_; }
  void show(const Banner& banner, std::uint32_t replaces, Completion completion) override;
  void close(std::uint32_t id) override;

 private:
  void takeSignal(const char* member, void (NotificationServer::*take)(sd_bus_message& signal));
  void takeToken(sd_bus_message& signal);
  void takeAction(sd_bus_message& signal);
  void takeClosing(sd_bus_message& signal);
  // Asks who the server is; false when the bus does not say, and it is asked again.
  bool lookUpOwner();
  void setOwner(const std::string& owner);
  void serverChanged(const std::string& owner);
  void takeAnswer(sd_bus_message& reply, const Banner& banner);
  // The end of the notification that is being shown, however it comes about; others are late.
  void finish(std::uint64_t attempt, const Outcome& outcome);
  void losePatience();
  void notify(const Banner& banner, std::uint32_t replaces, Completion completion);
  BusMessage notifyCall(const Banner& banner, std::uint32_t replaces) const;
  void appendActions(sd_bus_message* call, const Banner& banner) const;
  void appendHints(sd_bus_message* call, const Banner& banner) const;
  void appendRichHints(sd_bus_message* call, const Banner& banner) const;
  void showBadge(const Banner& banner) const;
  bool can(const char* capability) const { return capabilities_.contains(capability); }

  const Bus& bus_;
  const AppIdentity identity_;
  const PresenterEvents events_;
  const std::chrono::microseconds longest_;
  Completion completion_;  // of the notification that is being shown
  BusSlot answer_;         // what is waited for
  std::uint64_t attempt_ = 0;
  Timer patience_;
  Timer lookUp_;
  bool knowsOwner_ = false;
  std::string owner_;
  std::string session_;
  bool capabilitiesKnown_ = false;
  std::set<std::string, std::less<>> capabilities_;
  std::pair<std::uint32_t, std::string> activationToken_;
};

}  // namespace QXAgent
