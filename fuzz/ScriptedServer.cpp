#include "fuzz/ScriptedServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cstdlib>

#include "QXPlatform/foundation/FatalError.h"

namespace QXFuzz {
namespace {

using QXPlatform::FileDescriptor;

sockaddr_in loopback() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

FileDescriptor listening() {
  FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in address = loopback();
  if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(socket.get(), 64) != 0) {
    QXPlatform::fatalError("No port for the scripted server");
  }
  return socket;
}

// Whether head and body are there, as far as the length that the head names goes.
bool isWhole(const std::string& request) {
  constexpr std::string_view kLength = "Content-Length: ";
  const std::size_t end = request.find("\r\n\r\n");
  if (end == std::string::npos) return false;
  const std::size_t length = request.find(kLength);
  if (length > end) return true;
  return request.size() - end - 4 >= std::strtoul(request.c_str() + length + kLength.size(), nullptr, 10);
}

}  // namespace

ScriptedServer::ScriptedServer() : listener_(listening()), thread_([this] { serve(); }) {}

ScriptedServer::~ScriptedServer() {
  shutdown(listener_.get(), SHUT_RDWR);
  thread_.join();
}

std::string ScriptedServer::url() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size);
  return "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

void ScriptedServer::answer(std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  answer_ = bytes;
}

void ScriptedServer::serve() {
  while (true) {
    const FileDescriptor connection(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!connection.valid()) return;
    converse(connection.get());
  }
}

void ScriptedServer::converse(int connection) {
  std::string request;
  std::array<char, 4096> buffer{};
  while (!isWhole(request)) {
    const auto count = recv(connection, buffer.data(), buffer.size(), 0);
    if (count <= 0) return;
    request.append(buffer.data(), static_cast<std::size_t>(count));
  }
  std::string bytes;
  {
    const std::lock_guard lock(mutex_);
    bytes = answer_;
  }
  for (std::string_view rest = bytes; !rest.empty();) {
    const auto count = send(connection, rest.data(), rest.size(), MSG_NOSIGNAL);
    if (count <= 0) return;
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace QXFuzz
