#pragma once

#include "agent/loop/Bus.h"
#include "agent/sources/UnifiedPush.h"

namespace QXAgent {

// The object that distributors call, in both versions of its interface. The bus and the source must outlive
// the slots.
class Connector {
 public:
  Connector(const Bus& bus, UnifiedPush& source);

 private:
  BusSlot current_;
  BusSlot old_;
};

}  // namespace QXAgent
