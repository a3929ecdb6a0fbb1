#include "agent/presentation/PortalPresenter.h"

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <utility>

namespace QXAgent {

namespace {

constexpr const char* kName = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Notification";
constexpr std::chrono::seconds kLongestAnswer{60};

const char* priorityOf(Urgency urgency) {
  if (urgency == Urgency::critical) return "urgent";
  return urgency == Urgency::low ? "low" : "normal";
}

}  // namespace

PortalPresenter::PortalPresenter(const Bus& bus, PresenterEvents events)
    : bus_(bus),
      events_(std::move(events)),
      session_(bus.identifier() + kName),
      // Past what an earlier run has shown, which may be there still.
      lastId_(static_cast<std::uint32_t>(std::time(nullptr))) {
  bus_.onOwnerChange(kName, [this](const std::string& owner) { owner_ = owner; });
  owner_ = bus_.ownerOf(kName).value_or("");
  bus_.onSignal(kName, kPath, kInterface, "ActionInvoked", [this](sd_bus_message& signal) {
    if (senderOf(signal) != owner_) return;
    const char* id = nullptr;
    const char* action = nullptr;
    std::uint32_t number = 0;
    if (sd_bus_message_read(&signal, "ss", &id, &action) <= 0) return;
    if (std::from_chars(id, id + std::strlen(id), number).ec != std::errc()) return;
    events_.invoked(number, action, "");
    events_.closed(number);
  });
}

void PortalPresenter::show(const Banner& banner, std::uint32_t replaces, Completion completion) {
  // Shown again under its number when there was no answer, it replaces what may have been shown then.
  const bool isAgain = unanswered_.first == banner.identifier;
  const std::uint32_t id = replaces != 0 ? replaces : isAgain ? unanswered_.second : ++lastId_;
  unanswered_ = {banner.identifier, id};
  bus_.send(
      addCall(banner, id),
      [this, id, completion = std::move(completion)](sd_bus_message& reply) {
        if (const auto error = errorOf(reply)) {
          const End end = isRefusalBy(owner_, reply) ? End::refused : End::failed;
          return completion({end, 0, "the portal failed: " + *error});
        }
        unanswered_ = {};
        completion({End::shown, id, {}});
      },
      kLongestAnswer);
}

BusMessage PortalPresenter::addCall(const Banner& banner, std::uint32_t id) const {
  auto call = bus_.newCall(kName, kPath, kInterface, "AddNotification");
  const std::string body = bannerBody(banner, false);
  sd_bus_message_append(call.get(), "s", std::to_string(id).c_str());
  sd_bus_message_open_container(call.get(), 'a', "{sv}");
  sd_bus_message_append(call.get(), "{sv}{sv}{sv}", "title", "s", banner.title.c_str(), "body", "s",
                        body.c_str(), "priority", "s", priorityOf(banner.urgency));
  if (!banner.isPlain) sd_bus_message_append(call.get(), "{sv}", "default-action", "s", "default");
  if (banner.isExpandable)
    sd_bus_message_append(call.get(), "{sv}", "buttons", "aa{sv}", 1, 2, "label", "s", "Show more", "action",
                          "s", "expand");
  sd_bus_message_close_container(call.get());
  return call;
}

void PortalPresenter::close(std::uint32_t id) {
  auto call = bus_.newCall(kName, kPath, kInterface, "RemoveNotification");
  sd_bus_message_append(call.get(), "s", std::to_string(id).c_str());
  sd_bus_message_set_expect_reply(call.get(), 0);
  sd_bus_send(bus_.get(), call.get(), nullptr);
}

bool isSandboxed() {
  std::error_code ignored;
  return std::filesystem::exists("/.flatpak-info", ignored) || std::getenv("SNAP") != nullptr;
}

}  // namespace QXAgent
