#pragma once

#include <chrono>
#include <list>
#include <memory>
#include <optional>
#include <string>

#include "agent/Delivery.h"
#include "agent/activation/AppActivation.h"
#include "agent/activation/ContentWindow.h"
#include "agent/extensions/ServiceExtension.h"
#include "agent/extensions/UnitProgram.h"
#include "agent/loop/Bus.h"
#include "agent/presentation/Presenter.h"
#include "agent/setup/Installation.h"
#include "agent/sources/Connector.h"
#include "agent/sources/LineSource.h"
#include "agent/sources/PushObject.h"
#include "agent/sources/UnifiedPush.h"
#include "agent/spool/Spool.h"

namespace QXAgent {

// The agent of one app: what arrives goes into the spool, through the service extension and onto the desktop,
// and what the user does there is carried out.
class Agent final : private PushReceiver {
 public:
  struct Setting {
    Installation installation;
    std::filesystem::path state;  // the app's state directory
    std::chrono::seconds idle;    // how long it stays when there is nothing to do
    bool readsLines;              // pushes come on standard input as well, and the agent ends with them
    bool wasDamaged;              // the database that there was is no more
  };

  // The agent's bus name is to be requested once this is made. All must outlive the agent.
  Agent(EventLoop& loop, const Bus& bus, const Database& database, Setting setting);
  ~Agent() override;

  // Takes up what waits, and begins to listen.
  void start();

 private:
  bool receive(std::string_view key, std::string_view text) override;
  void refuse(std::string_view reason) override;
  void report(std::string_view problem) override;
  void rested() override { settle(); }

  LineSource::Handlers lineHandlers();
  PresenterEvents presenterEvents();
  void invoked(std::uint32_t id, const std::string& action, const std::string& token);
  void openWindow(const ShownNotification& notification, const std::string& token);
  // `token`: that of the click that opened the window, which lets the app come to the front in turn.
  void windowEnded(const std::string& identifier, ContentWindow::End end, const std::string& token);
  void bringUpApp(const std::string& identifier, const std::string& token);
  void closed(std::uint32_t id);
  void forget(const ShownNotification& notification);
  // Those that a server showed which is no more.
  void forgetEarlierSessions();
  // What the extensions have left there.
  void emptyTemporary();
  // What a kill has left.
  void removeForgottenFiles();
  // In a unit of its own where the user's service manager can, else, this time, as a child.
  QXPlatform::Result<StartedProgram> startServiceExtension();
  UnitLimits unitLimits() const;
  ProgramStart extensionStart(const std::filesystem::path& program) const;

  // Lets the time until the end run, or stops it.
  void settle();
  bool isBusy();
  void endWhenIdle();

  EventLoop& loop_;
  const Bus& bus_;
  const Setting setting_;
  Spool spool_;
  RegistrationStore registrations_;
  const bool usesUnits_;
  bool unitFailed_ = false;  // the last one that was to be started
  ServiceExtension extension_;
  Delivery delivery_;
  std::unique_ptr<Presenter> presenter_;
  AppActivation activation_;
  UnifiedPush unifiedPush_;
  Connector connector_;
  PushObject pushObject_;
  std::optional<LineSource> lines_;
  bool linesEnded_ = false;
  int exitCode_ = 0;
  std::list<std::pair<std::string, std::unique_ptr<ContentWindow>>>
      windows_;  // by the notification's identifier
  Timer tidy_;
  Timer idle_;
};

}  // namespace QXAgent
