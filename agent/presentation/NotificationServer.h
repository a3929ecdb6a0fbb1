#pragma once

#include <deque>
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
  std::filesystem::path sounds;  // where its sound files lie
};

// Presents through org.freedesktop.Notifications, leaving out what the server there cannot do.
class NotificationServer final : public Presenter {
 public:
  NotificationServer(const Bus& bus, AppIdentity identity, PresenterEvents events);

  const std::string& session() const override { return session_; }
  void show(const Banner& banner, std::uint32_t replaces, Completion completion) override;
  void close(std::uint32_t id) override;

 private:
  void serverChanged(const std::string& owner);
  void askCapabilities();
  void notify(const Banner& banner, std::uint32_t replaces, Completion completion);
  BusMessage notifyCall(const Banner& banner, std::uint32_t replaces) const;
  void appendActions(sd_bus_message* call, const Banner& banner) const;
  void appendHints(sd_bus_message* call, const Banner& banner) const;
  void showBadge(const Banner& banner) const;
  bool can(const char* capability) const { return capabilities_.contains(capability); }

  const Bus& bus_;
  const AppIdentity identity_;
  const PresenterEvents events_;
  std::string owner_;
  std::string session_;
  bool capabilitiesKnown_ = false;
  std::set<std::string, std::less<>> capabilities_;
  std::pair<std::uint32_t, std::string> activationToken_;
};

}  // namespace QXAgent
