#pragma once

#include "agent/loop/Bus.h"
#include "agent/sources/PushReceiver.h"
#include "agent/sources/UnifiedPush.h"

namespace QXAgent {

// Where the agent is met by the same user's other programs.
inline constexpr const char* kPushPath = "/push";
inline constexpr const char* kPushInterface = "com.veltro.quorix.Push1";

// That object: the endpoint as a property, and pushes handed over as they are.
class PushObject {
 public:
  // All three must outlive it.
  PushObject(const Bus& bus, UnifiedPush& source, PushReceiver& receiver);
  PushObject(const PushObject&) = delete;
  PushObject& operator=(const PushObject&) = delete;

 private:
  struct Methods;

  const Bus& bus_;
  UnifiedPush& source_;
  PushReceiver& receiver_;
  BusSlot slot_;
};

}  // namespace QXAgent
