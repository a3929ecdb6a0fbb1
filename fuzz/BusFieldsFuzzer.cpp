#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/FatalError.h"
#include "agent/sources/Distributors.h"

namespace {

using QXAgent::BusMessage;

// A connection to nobody, for which messages can be made.
sd_bus* connection() {
  static sd_bus* const bus = [] {
    std::array<int, 2> ends{};
    sd_bus* made = nullptr;
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()) != 0 || sd_bus_new(&made) < 0 ||
        sd_bus_set_fd(made, ends[0], ends[0]) < 0 || sd_bus_start(made) < 0) {
      QXPlatform::fatalError("No connection");
    }
    return made;
  }();
  return bus;
}

// A variant of one of the shapes that a caller may come up with.
void appendValue(sd_bus_message* message, std::uint8_t shape, const std::string& text) {
  switch (shape % 6) {
    case 0:
      sd_bus_message_append(message, "v", "s", text.c_str());
      break;
    case 1:
      sd_bus_message_open_container(message, 'v', "ay");
      sd_bus_message_append_array(message, 'y', text.data(), text.size());
      sd_bus_message_close_container(message);
      break;
    case 2:
      sd_bus_message_append(message, "v", "as", 2, text.c_str(), "");
      break;
    case 3:
      sd_bus_message_append(message, "v", "a{sv}", 1, text.c_str(), "v", "i", 7);
      break;
    case 4:
      sd_bus_message_append(message, "v", "(yd)", shape, 0.5);
      break;
    default:
      sd_bus_message_append(message, "v", "v", "ay", 2, shape, shape);
  }
}

}  // namespace

// Whatever a dictionary holds, its texts and bytes are read as they are, and nothing else is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sd_bus_message* message = nullptr;
  sd_bus_message_new_method_call(connection(), &message, "a.b", "/", "a.b", "C");
  const BusMessage owned(message);
  QXAgent::Fields expected;
  sd_bus_message_open_container(message, 'a', "{sv}");
  // Entries: shape, length, and as many bytes of text.
  for (std::string_view rest(reinterpret_cast<const char*>(data), size); rest.size() >= 2;) {
    const auto shape = static_cast<std::uint8_t>(rest[0]);
    const std::string bytes(rest.substr(2, static_cast<std::uint8_t>(rest[1])));
    rest.remove_prefix(2 + bytes.size());
    const std::string key(1, static_cast<char>('a' + shape / 6 % 4));
    std::string text = bytes;
    for (char& c : text) c = static_cast<char>(c & 0x7F);
    text.erase(std::min(text.find('\0'), text.size()));
    sd_bus_message_open_container(message, 'e', "sv");
    sd_bus_message_append(message, "s", key.c_str());
    appendValue(message, shape, shape % 6 == 1 ? bytes : text);
    sd_bus_message_close_container(message);
    if (shape % 6 == 0) expected.texts[key] = text;
    if (shape % 6 == 1) expected.bytes[key] = bytes;
  }
  sd_bus_message_close_container(message);
  if (sd_bus_message_seal(message, 1, 0) < 0) return 0;
  const auto fields = QXAgent::readFields(*message);
  if (fields.texts != expected.texts || fields.bytes != expected.bytes)
    QXPlatform::fatalError("Read something else than was sent");
  return 0;
}
