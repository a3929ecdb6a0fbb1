#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "QXExtensionSDK/runtime/VTQXNotificationService.h"
#include "QXPlatform/foundation/Value.h"
#include "agent/extensions/ServiceExtension.h"
#include "agent/loop/EventLoop.h"
#include "agent/presentation/Presenter.h"
#include "agent/spool/Spool.h"

namespace QXAgent {

// How many pushes the extension is given at the same time.
inline constexpr std::size_t kMostInHand = QXExtensionSDK::VTQXNotificationService::kMostNotificationsAtOnce;

// Leads the pushes that wait in the spool through the extension and onto the desktop: in the order in which
// they came, though none waits for an earlier one longer than two seconds.
class Delivery {
 public:
  struct Setting {
    std::string appName;
    std::filesystem::path temporary;  // where the extension leaves what it has downloaded
    std::filesystem::path files;      // where it lies while a notification shows it
  };

  // `idle` is called when nothing waits any more.
  Delivery(EventLoop& loop, Spool& spool, ServiceExtension& extension, Setting setting,
           std::function<void()> idle);

  // REQUIRES: to be called once, before anything else.
  void setPresenter(Presenter& presenter) { presenter_ = &presenter; }
  // There may be something new in the spool.
  void takeUp();
  // Whoever shows notifications is there again, or another one.
  void presenterChanged();
  bool isIdle() const { return inHand_.empty(); }

 private:
  using SteadyClock = std::chrono::steady_clock;
  struct InHand {
    WaitingPush push;
    QXPlatform::Dictionary request;
    bool isAsked = false;                           // the extension has it
    std::optional<QXPlatform::Dictionary> content;  // what is to be shown
    SteadyClock::time_point ready;
    std::uint32_t earlier = 0;     // the number of the notification whose place it takes, if any
    int refusals = 0;              // how often whoever shows notifications did not want it
    std::int64_t shownBefore = 0;  // how many had been shown when that began
    bool standsBack = false;       // those behind it go first
  };
  using Position = std::map<std::int64_t, InHand>::iterator;

  // Until there are so many in hand, or nothing waits.
  void fillHand(std::size_t most);
  void take(WaitingPush push);
  // Asks and shows what can be, but not from within somebody's call.
  void goOnSoon() { turn_.start(std::chrono::microseconds(0)); }
  bool mayBeAsked(std::int64_t number) const;
  void askAll();
  void finishAsking(std::int64_t number, const ServiceExtension::Outcome& outcome);
  void makeReady(InHand& push, QXPlatform::Dictionary content);

  // Shows the one whose turn it is, unless one is being shown.
  void showNext();
  Position next();
  void waitForTurn();
  void finishShowing(std::int64_t number, const Presenter::Outcome& outcome);
  void finishRefused(Position position, const std::string& problem);
  void letAllGoFirst();
  void showLater();

  Spool& spool_;
  ServiceExtension& extension_;
  Presenter* presenter_ = nullptr;
  const Setting setting_;
  const std::function<void()> idle_;
  std::map<std::int64_t, InHand> inHand_;  // by number
  std::int64_t lastTaken_ = 0;
  bool isShowing_ = false;
  std::int64_t shown_ = 0;         // by this process
  std::chrono::seconds pause_{0};  // before the next attempt, after a failed one
  Timer turn_;
  Timer retry_;
};

}  // namespace QXAgent
