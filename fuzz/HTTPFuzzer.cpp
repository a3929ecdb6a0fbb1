#include <cstddef>
#include <cstdint>
#include <future>
#include <string_view>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/network/URLSession.h"
#include "fuzz/ScriptedServer.h"

namespace {

using namespace QXPlatform;

constexpr std::size_t kMostAnswerBytes = 4096;

URLSessionConfiguration configuration() {
  return {.mostAnswerBytes = kMostAnswerBytes};
}

void check(const std::optional<Data>& body, const URLResponse* response,
           const std::optional<URLError>& error) {
  if (body.has_value() == error.has_value()) fatalError("Neither an answer nor an error, or both");
  if (error) return;
  if (body->size() > kMostAnswerBytes) fatalError("More than was asked for");
  const auto* http = dynamic_cast<const HTTPURLResponse*>(response);
  if (http == nullptr) fatalError("A body without an answer");
}

}  // namespace

// Whatever a server sends is an answer within its bounds, or an error, once and in time.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  // A redirect to the world outside would go there.
  if (lowercased(input).find("https") != std::string::npos) return 0;
  static QXFuzz::ScriptedServer server;
  static URLSession session(configuration());
  server.answer(input);
  std::promise<void> answered;
  session
      .dataTask(URLRequest(*URL::parse(server.url())),
                [&answered](const std::optional<Data>& body, const auto& response,
                            const std::optional<URLError>& error) {
                  check(body, response.get(), error);
                  answered.set_value();
                })
      ->resume();
  answered.get_future().wait();
  return 0;
}
