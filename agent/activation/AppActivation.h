#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "agent/activation/DesktopEntry.h"
#include "agent/loop/Bus.h"

namespace QXAgent {

// Brings up the app.
class AppActivation {
 public:
  // `failed` is told why the app could not be brought up.
  AppActivation(EventLoop& loop, const Bus& bus, std::string app,
                std::function<void(const std::string&)> failed)
      : loop_(loop), bus_(bus), app_(std::move(app)), failed_(std::move(failed)) {}

  // For the notification with this identifier; the token, which may be empty, lets the app come to the front.
  void activate(const std::string& identifier, const std::string& token) const;

 private:
  // When the app cannot be called, its command is started.
  void callApp(const DesktopEntry& entry, const std::string& identifier, const std::string& token) const;
  void startCommand(const std::vector<std::string>& command, const std::string& token) const;

  EventLoop& loop_;
  const Bus& bus_;
  const std::string app_;
  const std::function<void(const std::string&)> failed_;
};

}  // namespace QXAgent
