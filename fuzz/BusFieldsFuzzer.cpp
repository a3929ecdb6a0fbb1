#include <sys/socket.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/foundation/FatalError.h"
#include "agent/sources/Distributors.h"

namespace {

using QXAgent::BusMessage;
using QXAgent::Fields;
using QXPlatform::FileDescriptor;
using Connection = QXPlatform::Handle<sd_bus, sd_bus_close_unref>;

constexpr std::string_view kWelcome = "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n";

// Fields as a well-behaved program sends them.
BusMessage messageWith(sd_bus_message& like, const Fields& fields) {
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new_signal(sd_bus_message_get_bus(&like), &made, "/", "a.b", "C") < 0)
    QXPlatform::fatalError("No message");
  BusMessage message(made);
  sd_bus_message_open_container(made, 'a', "{sv}");
  for (const auto& [key, text] : fields.texts)
    sd_bus_message_append(made, "{sv}", key.c_str(), "s", text.c_str());
  for (const auto& [key, bytes] : fields.bytes) {
    sd_bus_message_open_container(made, 'e', "sv");
    sd_bus_message_append(made, "s", key.c_str());
    sd_bus_message_open_container(made, 'v', "ay");
    sd_bus_message_append_array(made, 'y', bytes.data(), bytes.size());
    sd_bus_message_close_container(made);
    sd_bus_message_close_container(made);
  }
  sd_bus_message_close_container(made);
  if (sd_bus_message_seal(made, 1, 0) < 0) QXPlatform::fatalError("Read what no message can hold");
  return message;
}

// The message with the length of its body set to what there is, which a mutation seldom meets.
std::string withLength(std::string message) {
  constexpr std::size_t kBodyLength = 4;
  constexpr std::size_t kFieldsLength = 12;
  constexpr std::size_t kFields = 16;
  std::uint32_t length = 0;
  if (message.size() < kFields || message[0] != 'l') return message;
  std::memcpy(&length, &message[kFieldsLength], sizeof length);
  const std::size_t body = kFields + (std::size_t{length} + 7) / 8 * 8;
  if (body > message.size()) return message;
  length = static_cast<std::uint32_t>(message.size() - body);
  std::memcpy(&message[kBodyLength], &length, sizeof length);
  return message;
}

// All that the agent reads of a stranger's message.
int readAll(sd_bus_message* message, void* /*nothing*/, sd_bus_error* /*nothing*/) {
  const std::string sender = QXAgent::senderOf(*message);
  if (QXAgent::errorOf(*message)) static_cast<void>(QXAgent::isRefusalBy(sender, *message));
  const Fields fields = QXAgent::readFields(*message);
  const Fields again = QXAgent::readFields(*messageWith(*message, fields));
  if (again.texts != fields.texts || again.bytes != fields.bytes)
    QXPlatform::fatalError("Read something else than was sent");
  sd_bus_message_rewind(message, 1);
  const char* token = nullptr;
  if (sd_bus_message_read(message, "s", &token) > 0) static_cast<void>(QXAgent::readBytes(*message));
  return 0;
}

}  // namespace

// Whatever comes over a connection is refused by the bus library, or is read as what it holds.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::array<int, 2> ends{};
  sd_bus* made = nullptr;
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data()) != 0 ||
      sd_bus_new(&made) < 0 || sd_bus_set_fd(made, ends[0], ends[0]) < 0 ||
      sd_bus_add_filter(made, nullptr, readAll, nullptr) < 0 || sd_bus_start(made) < 0) {
    QXPlatform::fatalError("No connection");
  }
  const Connection bus(made);
  const FileDescriptor peer(ends[1]);
  send(peer.get(), kWelcome.data(), kWelcome.size(), MSG_NOSIGNAL);
  const std::string message = withLength({reinterpret_cast<const char*>(data), size});
  send(peer.get(), message.data(), message.size(), MSG_NOSIGNAL);
  shutdown(peer.get(), SHUT_WR);
  while (sd_bus_process(bus.get(), nullptr) > 0) {
  }
  return 0;
}
