#include "agent/presentation/NotificationServer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <utility>

#include "QXPlatform/foundation/URL.h"

namespace QXAgent {

namespace {

constexpr const char* kName = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr std::chrono::seconds kBeforeNextLookUp{2};

BusMessage newServerCall(const Bus& bus, const char* member) {
  return bus.newCall(kName, kPath, kName, member);
}

// One that shows as many as it can, or has shown too many of late, takes more at another time.
bool isForNow(std::string_view error) {
  constexpr std::array kNames{".MaxNotificationsExceeded", ".ExcessNotificationGeneration"};
  return std::ranges::any_of(kNames, [&](const char* name) { return error.ends_with(name); });
}

void appendHint(sd_bus_message* call, const char* key, const char* type, const std::string& text) {
  sd_bus_message_append(call, "{sv}", key, type, text.c_str());
}

}  // namespace

NotificationServer::NotificationServer(EventLoop& loop, const Bus& bus, AppIdentity identity,
                                       PresenterEvents events, std::chrono::microseconds patience)
    : bus_(bus),
      identity_(std::move(identity)),
      events_(std::move(events)),
      longest_(patience),
      patience_(loop, [this] { losePatience(); }),
      lookUp_(loop, [this] {
        if (lookUpOwner()) events_.sessionChanged();
      }) {
  takeSignal("ActivationToken", &NotificationServer::takeToken);
  takeSignal("ActionInvoked", &NotificationServer::takeAction);
  takeSignal("NotificationClosed", &NotificationServer::takeClosing);
  bus_.onOwnerChange(kName, [this](const std::string& owner) { serverChanged(owner); });
  lookUpOwner();
}

bool NotificationServer::lookUpOwner() {
  const auto owner = bus_.ownerOf(kName);
  if (owner) {
    setOwner(*owner);
  } else {
    lookUp_.start(kBeforeNextLookUp);
  }
  return owner.has_value();
}

void NotificationServer::setOwner(const std::string& owner) {
  knowsOwner_ = true;
  lookUp_.stop();
  owner_ = owner;
  session_ = owner.empty() ? "" : bus_.identifier() + owner;
}

void NotificationServer::takeSignal(const char* member,
                                    void (NotificationServer::*take)(sd_bus_message& signal)) {
  bus_.onSignal(kName, kPath, kName, member, [this, take](sd_bus_message& signal) {
    // Only the server itself may say what became of a notification.
    if (senderOf(signal) == owner_) (this->*take)(signal);
  });
}

void NotificationServer::takeToken(sd_bus_message& signal) {
  const char* token = nullptr;
  if (sd_bus_message_read(&signal, "us", &activationToken_.first, &token) > 0)
    activationToken_.second = token;
}

void NotificationServer::takeAction(sd_bus_message& signal) {
  std::uint32_t id = 0;
  const char* action = nullptr;
  if (sd_bus_message_read(&signal, "us", &id, &action) <= 0) return;
  const auto token = std::exchange(activationToken_, {});
  events_.invoked(id, action, token.first == id ? token.second : "");
}

void NotificationServer::takeClosing(sd_bus_message& signal) {
  std::uint32_t id = 0;
  std::uint32_t reason = 0;
  if (sd_bus_message_read(&signal, "uu", &id, &reason) > 0) events_.closed(id);
}

void NotificationServer::serverChanged(const std::string& owner) {
  setOwner(owner);
  capabilitiesKnown_ = false;
  events_.sessionChanged();
}

void NotificationServer::show(const Banner& banner, std::uint32_t replaces, Completion completion) {
  if (capabilitiesKnown_) return notify(banner, replaces, std::move(completion));
  // Starts a server that the bus can start.
  bus_.send(
      newServerCall(bus_, "GetCapabilities"),
      [this, banner, replaces, completion = std::move(completion)](sd_bus_message& reply) {
        if (const auto error = errorOf(reply))
          return completion({End::failed, 0, "no notification server: " + *error});
        std::set<std::string, std::less<>> capabilities;
        int status = sd_bus_message_enter_container(&reply, 'a', "s");
        const char* capability = nullptr;
        while (status > 0 && (status = sd_bus_message_read(&reply, "s", &capability)) > 0)
          capabilities.insert(capability);
        if (status < 0)
          return completion({End::failed, 0, "the notification server's capabilities are no list of texts"});
        capabilities_ = std::move(capabilities);
        capabilitiesKnown_ = true;
        notify(banner, replaces, completion);
      },
      longest_);
}

void NotificationServer::notify(const Banner& banner, std::uint32_t replaces, Completion completion) {
  completion_ = std::move(completion);
  patience_.start(longest_);
  // Without a limit: a server that hangs may still show it, and one that is gone is reported by the bus.
  answer_ = bus_.sendWhileHeld(
      notifyCall(banner, replaces), [this, banner](sd_bus_message& reply) { takeAnswer(reply, banner); },
      kNoLimit);
}

void NotificationServer::takeAnswer(sd_bus_message& reply, const Banner& banner) {
  if (const auto error = errorOf(reply)) {
    // The bus answers for a server that has gone.
    const bool isRefusal = isRefusalBy(owner_, reply) && !isForNow(sd_bus_message_get_error(&reply)->name);
    return finish(attempt_,
                  {isRefusal ? End::refused : End::failed, 0, "the notification server failed: " + *error});
  }
  std::uint32_t id = 0;
  if (sd_bus_message_read(&reply, "u", &id) <= 0 || id == 0)
    return finish(attempt_, {End::failed, 0, "the notification server gave no number"});
  showBadge(banner);
  finish(attempt_, {End::shown, id, {}});
}

void NotificationServer::losePatience() {
  // One that answers this has no more to say to what it was asked before. One that hangs may show it yet, and
  // is not asked twice.
  bus_.send(
      newServerCall(bus_, "GetCapabilities"),
      [this, attempt = attempt_](sd_bus_message&) {
        finish(attempt, {End::failed, 0, "the notification server does not answer"});
      },
      kNoLimit);
}

void NotificationServer::finish(std::uint64_t attempt, const Outcome& outcome) {
  if (attempt != attempt_ || !completion_) return;
  patience_.stop();
  ++attempt_;
  answer_.reset();
  std::exchange(completion_, nullptr)(outcome);
}

BusMessage NotificationServer::notifyCall(const Banner& banner, std::uint32_t replaces) const {
  const bool hasBody = can("body");
  // The summary is plain whatever the server does with a body.
  const std::string text = bannerBody(banner, hasBody && can("body-markup"));
  const std::string summary = hasBody || text.empty() ? banner.title : banner.title + ": " + text;
  auto call = newServerCall(bus_, "Notify");
  sd_bus_message_append(call.get(), "susss", identity_.name.c_str(), replaces, identity_.icon.c_str(),
                        summary.c_str(), hasBody ? text.c_str() : "");
  appendActions(call.get(), banner);
  appendHints(call.get(), banner);
  sd_bus_message_append(call.get(), "i", -1);
  return call;
}

void NotificationServer::appendActions(sd_bus_message* call, const Banner& banner) const {
  sd_bus_message_open_container(call, 'a', "s");
  if (can("actions") && !banner.isPlain) {
    sd_bus_message_append(call, "ss", "default", "Open");
    if (banner.isExpandable) sd_bus_message_append(call, "ss", "expand", "Show more");
  }
  sd_bus_message_close_container(call);
}

void NotificationServer::appendHints(sd_bus_message* call, const Banner& banner) const {
  sd_bus_message_open_container(call, 'a', "{sv}");
  if (!banner.isPlain) appendRichHints(call, banner);
  sd_bus_message_close_container(call);
}

void NotificationServer::appendRichHints(sd_bus_message* call, const Banner& banner) const {
  appendHint(call, "desktop-entry", "s", identity_.app);
  sd_bus_message_append(call, "{sv}", "urgency", "y", static_cast<int>(banner.urgency));
  if (banner.image && can("icon-static"))
    appendHint(call, "image-path", "s", QXPlatform::URL::file(banner.image->native()).absoluteString());
  if (can("sound")) {
    std::error_code ignored;
    const auto file = identity_.sounds / banner.sound.value_or("");
    if (!banner.sound) {
      sd_bus_message_append(call, "{sv}", "suppress-sound", "b", 1);
    } else if (!identity_.sounds.empty() && banner.sound->find('/') == std::string::npos &&
               std::filesystem::is_regular_file(file, ignored)) {
      appendHint(call, "sound-file", "s", file.native());
    } else {
      appendHint(call, "sound-name", "s", "message-new-instant");
    }
  }
}

void NotificationServer::showBadge(const Banner& banner) const {
  if (!banner.badge) return;
  sd_bus_message* signal = nullptr;
  sd_bus_message_new_signal(bus_.get(), &signal, "/push", "com.canonical.Unity.LauncherEntry", "Update");
  const BusMessage owned(signal);
  const std::string entry = "application://" + identity_.app + ".desktop";
  sd_bus_message_append(signal, "sa{sv}", entry.c_str(), 2, "count", "x", *banner.badge, "count-visible", "b",
                        static_cast<int>(*banner.badge > 0));
  sd_bus_send(bus_.get(), signal, nullptr);
}

void NotificationServer::close(std::uint32_t id) {
  auto call = newServerCall(bus_, "CloseNotification");
  sd_bus_message_append(call.get(), "u", id);
  sd_bus_message_set_expect_reply(call.get(), 0);
  sd_bus_send(bus_.get(), call.get(), nullptr);
}

}  // namespace QXAgent
