#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "agent/loop/Bus.h"

namespace QXAgent {

// What the bus names of all distributors begin with, before a dot.
inline constexpr const char* kDistributors = "org.unifiedpush.Distributor";

// The bus names of the distributors that run or can be started.
std::set<std::string> distributorNames(const Bus& bus);

// What a dictionary argument holds, as far as it is text or bytes; what does not fit is as good as absent.
struct Fields {
  std::map<std::string, std::string> texts;
  std::map<std::string, std::string> bytes;

  // Empty when it is absent.
  std::string text(const std::string& key) const;
};
Fields readFields(sd_bus_message& message);

// An array of bytes at the reading position; nothing when there is something else.
std::optional<std::string> readBytes(sd_bus_message& message);

}  // namespace QXAgent
