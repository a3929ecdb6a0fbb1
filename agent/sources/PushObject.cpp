#include "agent/sources/PushObject.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "QXPlatform/notifications/PushLines.h"
#include "agent/sources/Distributors.h"

namespace QXAgent {

namespace {

constexpr std::size_t kLongestKey = 256;

}  // namespace

struct PushObject::Methods {
  static PushObject& self(void* object) { return *static_cast<PushObject*>(object); }

  static int getEndpoint(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* object,
                         sd_bus_error*) {
    return sd_bus_message_append(reply, "s", self(object).source_.endpoint().c_str());
  }

  static int registerApp(sd_bus_message* call, void* object, sd_bus_error*) {
    const std::shared_ptr<sd_bus_message> kept(sd_bus_message_ref(call), sd_bus_message_unref);
    self(object).source_.registerApp([kept](const QXPlatform::Result<std::string>& endpoint) {
      if (endpoint) {
        sd_bus_reply_method_return(kept.get(), "");
      } else {
        sd_bus_reply_method_errorf(kept.get(), SD_BUS_ERROR_FAILED, "%s", endpoint.error().message.c_str());
      }
    });
    return 1;
  }

  static int unregisterApp(sd_bus_message* call, void* object, sd_bus_error* error) {
    const std::shared_ptr<sd_bus_message> kept(sd_bus_message_ref(call), sd_bus_message_unref);
    if (self(object).source_.unregisterApp([kept] { sd_bus_reply_method_return(kept.get(), ""); })) return 1;
    return sd_bus_error_set_const(error, SD_BUS_ERROR_FAILED, "The registration cannot be ended now");
  }

  static int deliver(sd_bus_message* call, void* object, sd_bus_error* error) {
    return take(call, "", object, error);
  }

  static int deliverOnce(sd_bus_message* call, void* object, sd_bus_error* error) {
    const char* key = nullptr;
    if (const int status = sd_bus_message_read(call, "s", &key); status < 0) return status;
    const std::string_view text(key);
    if (text.empty() || text.size() > kLongestKey)
      return sd_bus_error_set_const(error, SD_BUS_ERROR_INVALID_ARGS, "This is no key");
    return take(call, "once:" + std::string(text), object, error);
  }

  static int take(sd_bus_message* call, const std::string& key, void* object, sd_bus_error* error) {
    const auto push = readBytes(*call);
    if (!push) return -EINVAL;
    if (push->size() > QXPlatform::kLongestPush)
      return sd_bus_error_set_const(error, SD_BUS_ERROR_INVALID_ARGS, "This is too long for a push");
    if (self(object).receiver_.receive(key, *push)) return sd_bus_reply_method_return(call, "");
    return sd_bus_error_set_const(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "The push cannot be kept now");
  }

  // Without the mark for everybody, so that the bus library lets only this user's programs call.
  static constexpr sd_bus_vtable kTable[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_PROPERTY("Endpoint", "s", getEndpoint, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
      SD_BUS_METHOD("Register", "", "", registerApp, 0),
      SD_BUS_METHOD("Unregister", "", "", unregisterApp, 0),
      SD_BUS_METHOD("Deliver", "ay", "", deliver, 0),
      SD_BUS_METHOD("DeliverOnce", "say", "", deliverOnce, 0),
      SD_BUS_VTABLE_END,
  };
};

PushObject::PushObject(const Bus& bus, UnifiedPush& source, PushReceiver& receiver)
    : bus_(bus), source_(source), receiver_(receiver) {
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_object_vtable(bus_.get(), &slot, kPushPath, kPushInterface, Methods::kTable, this) < 0)
    throw std::runtime_error("no object on the bus");
  slot_.reset(slot);
  source_.setEndpointHandler(
      [this] { sd_bus_emit_properties_changed(bus_.get(), kPushPath, kPushInterface, "Endpoint", nullptr); });
}

}  // namespace QXAgent
