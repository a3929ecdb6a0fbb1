#include "agent/loop/Bus.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

namespace QXAgent {

namespace {

using QXPlatform::Error;
using QXPlatform::Result;

constexpr const char* kBusName = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";

int callHandler(sd_bus_message* message, void* handler, sd_bus_error*) {
  (*static_cast<Bus::Handler*>(handler))(*message);
  return 0;
}

void deleteHandler(void* handler) {
  delete static_cast<Bus::Handler*>(handler);
}

// What a call is answered with that cannot be sent.
BusMessage newErrorReply(const Bus& bus, int error) {
  const auto call = bus.newCall(kBusName, kBusPath, kBusName, "GetId");
  sd_bus_message_seal(call.get(), 1, 0);
  sd_bus_message* reply = nullptr;
  sd_bus_message_new_method_errno(call.get(), &reply, error, nullptr);
  return BusMessage(reply);
}

// Leaves slot and handler to the bus.
void giveToBus(sd_bus_slot* slot) {
  sd_bus_slot_set_destroy_callback(slot, deleteHandler);
  sd_bus_slot_set_floating(slot, 1);
  sd_bus_slot_unref(slot);
}

std::uint64_t limitOf(std::chrono::microseconds limit) {
  return limit == kNoLimit ? UINT64_MAX : static_cast<std::uint64_t>(limit.count());
}

}  // namespace

Result<Bus> Bus::connect(EventLoop& loop) {
  sd_bus* bus = nullptr;
  if (const int error = sd_bus_open_user(&bus); error < 0)
    return Error{std::string("there is no session bus: ") + std::strerror(-error)};
  Bus connection(bus);
  sd_bus_set_exit_on_disconnect(bus, 1);
  if (const int error = sd_bus_attach_event(bus, loop.get(), SD_EVENT_PRIORITY_NORMAL); error < 0)
    return Error{std::string("the session bus cannot be used: ") + std::strerror(-error)};
  return connection;
}

std::string Bus::identifier() const {
  sd_id128_t id{};
  std::array<char, SD_ID128_STRING_MAX> text{};
  return sd_bus_get_bus_id(bus_.get(), &id) < 0 ? std::string() : sd_id128_to_string(id, text.data());
}

BusMessage Bus::newCall(const char* destination, const char* path, const char* interface,
                        const char* member) const {
  sd_bus_message* message = nullptr;
  sd_bus_message_new_method_call(bus_.get(), &message, destination, path, interface, member);
  return BusMessage(message);
}

void Bus::send(BusMessage call, Handler handler, std::chrono::microseconds limit) const {
  BusSlot slot = sendWhileHeld(std::move(call), std::move(handler), limit);
  if (slot != nullptr) giveToBus(slot.release());
}

BusSlot Bus::sendWhileHeld(BusMessage call, Handler handler, std::chrono::microseconds limit) const {
  auto owned = std::make_unique<Handler>(std::move(handler));
  sd_bus_slot* slot = nullptr;
  const int status =
      sd_bus_call_async(bus_.get(), &slot, call.get(), callHandler, owned.get(), limitOf(limit));
  if (status < 0) {
    (*owned)(*newErrorReply(*this, status));
    return nullptr;
  }
  sd_bus_slot_set_destroy_callback(slot, deleteHandler);
  static_cast<void>(owned.release());
  return BusSlot(slot);
}

BusMessage Bus::ask(const BusMessage& call, std::string* error, std::chrono::microseconds limit) const {
  sd_bus_message* reply = nullptr;
  sd_bus_error problem = SD_BUS_ERROR_NULL;
  const int status = sd_bus_call(bus_.get(), call.get(), limitOf(limit), &problem, &reply);
  if (status < 0 && error != nullptr)
    *error = problem.message != nullptr ? problem.message : std::strerror(-status);
  sd_bus_error_free(&problem);
  return BusMessage(reply);
}

void Bus::onSignal(const char* sender, const char* path, const char* interface, const char* member,
                   Handler handler) const {
  auto owned = std::make_unique<Handler>(std::move(handler));
  sd_bus_slot* slot = nullptr;
  if (sd_bus_match_signal(bus_.get(), &slot, sender, path, interface, member, callHandler, owned.get()) < 0)
    return;
  static_cast<void>(owned.release());
  giveToBus(slot);
}

void Bus::onOwnerChange(const std::string& name,
                        std::function<void(const std::string& owner)> handler) const {
  watchOwners("arg0='" + name + "'", std::move(handler));
}

void Bus::onOwnerChangeBelow(const std::string& name,
                             std::function<void(const std::string& owner)> handler) const {
  watchOwners("arg0namespace='" + name + "'", std::move(handler));
}

void Bus::watchOwners(const std::string& names, std::function<void(const std::string& owner)> handler) const {
  auto owned = std::make_unique<Handler>([handler = std::move(handler)](sd_bus_message& signal) {
    const char* changed = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (senderOf(signal) != kBusName) return;
    if (sd_bus_message_read(&signal, "sss", &changed, &before, &now) > 0) handler(now);
  });
  const std::string rule = std::string("type='signal',sender='") + kBusName + "',path='" + kBusPath +
                           "',interface='" + kBusName + "',member='NameOwnerChanged'," + names;
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_match(bus_.get(), &slot, rule.c_str(), callHandler, owned.get()) < 0) return;
  static_cast<void>(owned.release());
  giveToBus(slot);
}

std::optional<std::string> Bus::ownerOf(const std::string& name) const {
  sd_bus_creds* credentials = nullptr;
  const int status = sd_bus_get_name_creds(bus_.get(), name.c_str(), SD_BUS_CREDS_UNIQUE_NAME, &credentials);
  const QXPlatform::Handle<sd_bus_creds, sd_bus_creds_unref> owned(credentials);
  if (status == -ENXIO || status == -ESRCH) return "";
  const char* owner = nullptr;
  if (status < 0 || sd_bus_creds_get_unique_name(credentials, &owner) < 0) return std::nullopt;
  return owner;
}

std::optional<int> Bus::processOf(const std::string& name) const {
  auto call = newCall(kBusName, kBusPath, kBusName, "GetConnectionUnixProcessID");
  sd_bus_message_append(call.get(), "s", name.c_str());
  const auto reply = ask(call);
  std::uint32_t process = 0;
  if (reply == nullptr || sd_bus_message_read(reply.get(), "u", &process) <= 0) return std::nullopt;
  return static_cast<int>(process);
}

bool Bus::requestName(const std::string& name) const {
  return sd_bus_request_name(bus_.get(), name.c_str(), 0) >= 0;
}

void Bus::releaseName(const std::string& name) const {
  sd_bus_release_name(bus_.get(), name.c_str());
  while (sd_bus_process(bus_.get(), nullptr) > 0) {
  }
}

std::string senderOf(sd_bus_message& message) {
  const char* sender = sd_bus_message_get_sender(&message);
  return sender == nullptr ? "" : sender;
}

bool isRefusalBy(const std::string& program, sd_bus_message& error) {
  constexpr std::array kNoWord{SD_BUS_ERROR_UNKNOWN_METHOD, SD_BUS_ERROR_UNKNOWN_INTERFACE,
                               SD_BUS_ERROR_UNKNOWN_OBJECT, SD_BUS_ERROR_NOT_SUPPORTED,
                               SD_BUS_ERROR_NO_REPLY};
  return senderOf(error) == program && std::ranges::none_of(kNoWord, [&](const char* name) {
           return sd_bus_message_is_method_error(&error, name) > 0;
         });
}

std::optional<std::string> errorOf(sd_bus_message& reply) {
  const sd_bus_error* error = sd_bus_message_get_error(&reply);
  if (error == nullptr) return std::nullopt;
  return std::string(error->name) + (error->message != nullptr ? std::string(": ") + error->message : "");
}

}  // namespace QXAgent
