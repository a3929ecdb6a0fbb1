#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "QXPlatform/foundation/Handle.h"
#include "QXPlatform/foundation/Result.h"
#include "agent/loop/EventLoop.h"

namespace QXAgent {

using BusMessage = QXPlatform::Handle<sd_bus_message, sd_bus_message_unref>;
using BusSlot = QXPlatform::Handle<sd_bus_slot, sd_bus_slot_unref>;

// Calls with this limit end with their reply, or with the program that was called.
inline constexpr std::chrono::microseconds kNoLimit = std::chrono::microseconds::max();

// This process's connection to the session bus, on the agent's one thread. The loop ends with the connection.
class Bus {
 public:
  using Handler = std::function<void(sd_bus_message& message)>;

  static QXPlatform::Result<Bus> connect(EventLoop& loop);

  sd_bus* get() const { return bus_.get(); }
  // Differs between two runs of a bus, whose names and numbers begin anew.
  std::string identifier() const;

  BusMessage newCall(const char* destination, const char* path, const char* interface,
                     const char* member) const;
  // Sends the call; the handler gets the reply, which may be an error, once: at once when it cannot be sent.
  void send(BusMessage call, Handler handler,
            std::chrono::microseconds limit = std::chrono::seconds(25)) const;
  // The same, but the handler is called no more, and gone, once the slot is.
  BusSlot sendWhileHeld(BusMessage call, Handler handler, std::chrono::microseconds limit) const;
  // Sends the call and waits: for the bus itself, which answers at once. Null after an error.
  BusMessage ask(const BusMessage& call, std::string* error = nullptr,
                 std::chrono::microseconds limit = std::chrono::seconds(2)) const;

  // Who sent a signal is for the handler to see: a program may address one to this process alone, and such a
  // signal passes whatever the match asks for.
  void onSignal(const char* sender, const char* path, const char* interface, const char* member,
                Handler handler) const;
  // Called with the new owner's unique name, or an empty one, whenever that changes.
  void onOwnerChange(const std::string& name, std::function<void(const std::string& owner)> handler) const;
  // The same for all names that begin with this one and a dot.
  void onOwnerChangeBelow(const std::string& name,
                          std::function<void(const std::string& owner)> handler) const;

  // The unique name of a well-known name's owner, empty when nobody has it; nothing when the bus did not say.
  std::optional<std::string> ownerOf(const std::string& name) const;
  // The process that owns a name, when one does.
  std::optional<int> processOf(const std::string& name) const;
  // Whether this process has the name now.
  bool requestName(const std::string& name) const;
  // Gives the name away and takes up all that was sent to this process while it had it.
  void releaseName(const std::string& name) const;

 private:
  explicit Bus(sd_bus* bus) : bus_(bus) {}
  void watchOwners(const std::string& names, std::function<void(const std::string& owner)> handler) const;

  QXPlatform::Handle<sd_bus, sd_bus_flush_close_unref> bus_;
};

// The unique name of the program that a message came from.
std::string senderOf(sd_bus_message& message);

// "name: text" of an error reply; nothing for any other.
std::optional<std::string> errorOf(sd_bus_message& reply);

// Whether an error reply is what that program, which has such a method and answers, says to this very call.
bool isRefusalBy(const std::string& program, sd_bus_message& error);

}  // namespace QXAgent
