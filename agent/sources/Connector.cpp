#include "agent/sources/Connector.h"

#include <stdexcept>
#include <string>

#include "agent/sources/Distributors.h"

namespace QXAgent {

namespace {

constexpr const char* kPath = "/org/unifiedpush/Connector";
constexpr const char* kInterface = "org.unifiedpush.Connector2";
constexpr const char* kOldInterface = "org.unifiedpush.Connector1";

using Answer = UnifiedPush::Answer;

UnifiedPush& sourceOf(void* object) {
  return *static_cast<UnifiedPush*>(object);
}

int refuse(Answer answer, sd_bus_error* error) {
  return answer == Answer::notAllowed
             ? sd_bus_error_set_const(error, SD_BUS_ERROR_ACCESS_DENIED, "Only the distributor may call this")
             : sd_bus_error_set_const(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "It cannot be kept now");
}

// `id`: what is to be given back; empty: nothing.
int reply(sd_bus_message* call, Answer answer, const std::string& id, sd_bus_error* error) {
  if (answer != Answer::done) return refuse(answer, error);
  return id.empty() ? sd_bus_reply_method_return(call, "a{sv}", 0)
                    : sd_bus_reply_method_return(call, "a{sv}", 1, "id", "s", id.c_str());
}

int replyOld(sd_bus_message* call, Answer answer, sd_bus_error* error) {
  return answer == Answer::done ? sd_bus_reply_method_return(call, "") : refuse(answer, error);
}

int takeMessage(sd_bus_message* call, void* source, sd_bus_error* error) {
  auto fields = readFields(*call);
  const std::string id = fields.text("id");
  const Answer answer =
      sourceOf(source).message(senderOf(*call), {fields.text("token"), fields.bytes["message"], id});
  return reply(call, answer, id, error);
}

int takeEndpoint(sd_bus_message* call, void* source, sd_bus_error* error) {
  const auto fields = readFields(*call);
  return reply(call,
               sourceOf(source).newEndpoint(senderOf(*call), fields.text("token"), fields.text("endpoint")),
               "", error);
}

int takeUnregistered(sd_bus_message* call, void* source, sd_bus_error* error) {
  return reply(call, sourceOf(source).unregistered(senderOf(*call), readFields(*call).text("token")), "",
               error);
}

int takeOldMessage(sd_bus_message* call, void* source, sd_bus_error* error) {
  const char* token = nullptr;
  if (const int status = sd_bus_message_read(call, "s", &token); status < 0) return status;
  const auto bytes = readBytes(*call);
  const char* id = nullptr;
  if (const int status = sd_bus_message_read(call, "s", &id); status < 0) return status;
  return replyOld(call, sourceOf(source).message(senderOf(*call), {token, bytes.value_or(""), id}), error);
}

int takeOldEndpoint(sd_bus_message* call, void* source, sd_bus_error* error) {
  const char* token = nullptr;
  const char* endpoint = nullptr;
  if (const int status = sd_bus_message_read(call, "ss", &token, &endpoint); status < 0) return status;
  return replyOld(call, sourceOf(source).newEndpoint(senderOf(*call), token, endpoint), error);
}

int takeOldUnregistered(sd_bus_message* call, void* source, sd_bus_error* error) {
  const char* token = nullptr;
  if (const int status = sd_bus_message_read(call, "s", &token); status < 0) return status;
  return replyOld(call, sourceOf(source).unregistered(senderOf(*call), token), error);
}

const sd_bus_vtable kMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Message", "a{sv}", "a{sv}", takeMessage, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("NewEndpoint", "a{sv}", "a{sv}", takeEndpoint, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Unregistered", "a{sv}", "a{sv}", takeUnregistered, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

const sd_bus_vtable kOldMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Message", "says", "", takeOldMessage, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("NewEndpoint", "ss", "", takeOldEndpoint, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Unregistered", "s", "", takeOldUnregistered, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

BusSlot addObject(const Bus& bus, const char* interface, const sd_bus_vtable* methods, UnifiedPush& source) {
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_object_vtable(bus.get(), &slot, kPath, interface, methods, &source) < 0)
    throw std::runtime_error("no object on the bus");
  return BusSlot(slot);
}

}  // namespace

Connector::Connector(const Bus& bus, UnifiedPush& source)
    : current_(addObject(bus, kInterface, kMethods, source)),
      old_(addObject(bus, kOldInterface, kOldMethods, source)) {}

}  // namespace QXAgent
