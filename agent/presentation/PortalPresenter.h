#pragma once

#include <string>
#include <utility>

#include "agent/loop/Bus.h"
#include "agent/presentation/Presenter.h"

namespace QXAgent {

// Presents through org.freedesktop.portal.Notification, the one way out of a sandbox. It shows no subtitle of
// its own and no thumbnail by name, and does not say when a notification has been closed: one that was shown
// is forgotten when it was clicked or replaced.
class PortalPresenter final : public Presenter {
 public:
  PortalPresenter(const Bus& bus, PresenterEvents events);

  const std::string& session() const override { return session_; }
  bool knowsSession() const override { return true; }
  void show(const Banner& banner, std::uint32_t replaces, Completion completion) override;
  void close(std::uint32_t id) override;

 private:
  BusMessage addCall(const Banner& banner, std::uint32_t id) const;

  const Bus& bus_;
  const PresenterEvents events_;
  std::string owner_;
  std::string session_;
  std::uint32_t lastId_ = 0;
  std::pair<std::string, std::uint32_t> unanswered_;  // identifier and number
};

// Whether this program runs in a sandbox, where only portals can be reached.
bool isSandboxed();

}  // namespace QXAgent
