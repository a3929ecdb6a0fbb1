#include <pthread.h>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>

#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"
#include "tools/backend/RequestLine.h"

namespace backend {
namespace {

using std::chrono::steady_clock;
using namespace std::chrono_literals;
using boost::asio::ip::tcp;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

class Client {
 public:
  explicit Client(const LoopbackServer& server) {
    socket_.connect({boost::asio::ip::address_v4::loopback(), server.port()});
  }

  void send(std::string_view text) { boost::asio::write(socket_, boost::asio::buffer(text)); }

  std::string receiveUntilClosed() {
    std::string received;
    boost::system::error_code error;
    boost::asio::read(socket_, boost::asio::dynamic_buffer(received), error);
    return received;
  }

 private:
  boost::asio::io_context context_;
  tcp::socket socket_{context_};
};

// Sends the text as it is and returns all that comes back until the server closes.
std::string converse(const LoopbackServer& server, std::string_view text) {
  Client client(server);
  client.send(text);
  return client.receiveUntilClosed();
}

std::string get(const LoopbackServer& server, const std::string& path) {
  return converse(server, "GET " + path + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
}

TEST(LoopbackServerTest, AnswersAsToldAndRemembersWhatItWasAsked) {
  std::vector<std::string> told;
  LoopbackServer server({.status = 503,
                         .body = "later",
                         .contentType = "text/plain",
                         .headers = {{"X-Extra", "1"}},
                         .onRequest = [&](const Request& request) { told.push_back(request.path); }});

  const std::string answers =
      converse(server,
               "POST /a?b=c HTTP/1.1\r\nHost: x\r\nx-two: 2\r\nContent-Length: 4\r\n\r\nbody"
               "GET /next HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");

  EXPECT_THAT(answers, StartsWith("HTTP/1.1 503 Service Unavailable\r\nX-Extra: 1\r\n"
                                  "Content-Type: text/plain\r\nContent-Length: 5\r\n\r\nlater"
                                  "HTTP/1.1 503"));
  ASSERT_TRUE(server.waitForRequests(2, steady_clock::now() + 10s));
  EXPECT_FALSE(server.waitForRequests(3, steady_clock::now()));
  const auto requests = server.requests();
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].body, "body");
  EXPECT_THAT(requests[0].headers,
              ElementsAre(Pair("Host", "x"), Pair("x-two", "2"), Pair("Content-Length", "4")));
  EXPECT_EQ(requests[1].header("HOST"), "x");
  EXPECT_THAT(told, ElementsAre("/a?b=c", "/next"));
  EXPECT_EQ(server.connectionCount(), 1);
}

TEST(LoopbackServerTest, KeepsNoRequestsUnlessItIsTo) {
  const LoopbackServer server({.keepsRequests = false});
  for (int i = 0; i < 2; ++i) EXPECT_THAT(get(server, "/"), EndsWith("{}"));
  EXPECT_TRUE(server.waitForRequests(2, steady_clock::now() + 10s));
  EXPECT_TRUE(server.requests().empty());
}

TEST(LoopbackServerTest, HandlerScriptsTheAnswer) {
  LoopbackServer server({.handler = [](const Request& request) -> std::optional<Response> {
    if (request.path == "/else") return std::nullopt;
    if (request.path == "/raise") throw std::runtime_error("raised");
    if (request.path == "/none") return Response{.status = 204, .body = "not sent"};
    if (request.path == "/move") return Response::redirect(302, "/else");
    return Response{.body = "abc", .interimStatuses = {103}, .chunked = true, .pacing = Pacing{2, 1ms}};
  }});

  EXPECT_THAT(get(server, "/"), StartsWith("HTTP/1.1 103 \r\n\r\nHTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(get(server, "/"), EndsWith("\r\n\r\n2\r\nab\r\n1\r\nc\r\n0\r\n\r\n"));
  EXPECT_THAT(get(server, "/else"), EndsWith("\r\n\r\n{}"));
  EXPECT_THAT(get(server, "/raise"), StartsWith("HTTP/1.1 500 "));
  EXPECT_EQ(get(server, "/none"), "HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
  EXPECT_THAT(get(server, "/move"), HasSubstr("Location: /else\r\n"));
}

TEST(LoopbackServerTest, ServesADirectoryAndNothingOutsideIt) {
  const support::TemporaryDirectory directory;
  std::filesystem::create_directories(directory.path("served/sub"));
  directory.write("served/a b.gif", "inside");
  std::filesystem::create_symlink(directory.write("secret.txt", "secret"), directory.path("served/link"));
  const LoopbackServer builtIn;
  EXPECT_THAT(get(builtIn, "/files/ocean.png?size=2"), HasSubstr("Content-Type: image/png"));
  EXPECT_THAT(get(builtIn, "/files/no.png"), StartsWith("HTTP/1.1 404 "));
  LoopbackServer server({.files = directory.path("served")});

  const std::pair<const char*, const char*> table[] = {
      {"/files/a%20b.gif", "200"}, {"/files/sub/../a%20b.gif", "200"},      {"/files/../secret.txt", "403"},
      {"/files/link", "403"},      {"/files/%2e%2e/secret.txt", "403"},     {"/files/sub", "404"},
      {"/files/none", "404"},      {"/files//etc/passwd", "404"},           {"/files/a%00", "400"},
      {"/files/%4", "400"},        {"/files/..%2Fserved/a%20b.gif", "200"},
  };
  for (const auto& [path, status] : table) {
    const std::string answer = get(server, path);
    EXPECT_EQ(answer.substr(9, 3), status) << path;
    EXPECT_EQ(answer.ends_with("inside"), std::string_view(status) == "200") << path;
  }
  EXPECT_THROW(LoopbackServer({.files = directory.path("missing")}), std::runtime_error);
}

TEST(LoopbackServerTest, StopsWhileAnswersArePending) {
  LoopbackServer::Options slow{.delay = 1h};
  LoopbackServer::Options silent{.hang = true};
  for (const auto& options : {slow, silent}) {
    LoopbackServer server(options);
    Client client(server);
    client.send("GET /files/night.png HTTP/1.1\r\n\r\n");
    ASSERT_TRUE(server.waitForRequests(1, steady_clock::now() + 10s));
  }
}

TEST(RequestLineTest, ShowsTheBodyAsWhatItIs) {
  const std::pair<std::string, std::string> table[] = {
      {"", "null"},
      {R"({"a": [1, 2.5]})", R"({"a":[1,2.5]})"},
      {R"({"a": )", R"("{\"a\": ")"},
      {"caf\xC3\xA9", "\"caf\xC3\xA9\""},
      {"a\xFF"
       "b",
       "\"a\xEF\xBF\xBD"
       "b\""},
  };
  for (const auto& [body, shown] : table) {
    const Request request{"POST", "/p?q=1", {{"b", "1"}, {"A", "x"}, {"b", "2"}}, body};
    EXPECT_EQ(requestLine(request),
              R"({"body":)" + shown + R"(,"headers":{"A":"x","b":"1, 2"},"method":"POST","path":"/p?q=1"})");
  }
}

}  // namespace
}  // namespace backend
