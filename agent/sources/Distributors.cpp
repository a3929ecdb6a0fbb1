#include "agent/sources/Distributors.h"

#include <string_view>

namespace QXAgent {

namespace {

void addNames(const Bus& bus, const char* list, std::set<std::string>& names) {
  const auto reply =
      bus.ask(bus.newCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", list));
  if (reply == nullptr || sd_bus_message_enter_container(reply.get(), 'a', "s") <= 0) return;
  const std::string prefix = std::string(kDistributors) + '.';
  for (const char* name = nullptr; sd_bus_message_read(reply.get(), "s", &name) > 0;) {
    if (std::string_view(name).starts_with(prefix)) names.insert(name);
  }
}

void readField(sd_bus_message& message, Fields& fields) {
  const char* key = nullptr;
  const char* contents = nullptr;
  if (sd_bus_message_read(&message, "s", &key) <= 0) return;
  if (sd_bus_message_peek_type(&message, nullptr, &contents) <= 0) return;
  const std::string_view type(contents);
  const char* text = nullptr;
  if (type == "s" && sd_bus_message_read(&message, "v", "s", &text) > 0) {
    fields.texts[key] = text;
  } else if (type == "ay" && sd_bus_message_enter_container(&message, 'v', "ay") > 0) {
    if (auto bytes = readBytes(message)) fields.bytes[key] = *std::move(bytes);
    sd_bus_message_exit_container(&message);
  } else {
    sd_bus_message_skip(&message, "v");
  }
}

}  // namespace

std::set<std::string> distributorNames(const Bus& bus) {
  std::set<std::string> names;
  addNames(bus, "ListNames", names);
  addNames(bus, "ListActivatableNames", names);
  return names;
}

std::string Fields::text(const std::string& key) const {
  const auto found = texts.find(key);
  return found == texts.end() ? std::string() : found->second;
}

Fields readFields(sd_bus_message& message) {
  Fields fields;
  if (sd_bus_message_enter_container(&message, 'a', "{sv}") <= 0) return fields;
  while (sd_bus_message_enter_container(&message, 'e', "sv") > 0) {
    readField(message, fields);
    if (sd_bus_message_exit_container(&message) < 0) break;
  }
  return fields;
}

std::optional<std::string> readBytes(sd_bus_message& message) {
  const void* bytes = nullptr;
  std::size_t size = 0;
  if (sd_bus_message_read_array(&message, 'y', &bytes, &size) <= 0) return std::nullopt;
  return std::string(static_cast<const char*>(bytes), size);
}

}  // namespace QXAgent
