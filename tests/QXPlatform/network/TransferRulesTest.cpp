#include "QXTestSupport/ManualClock.h"
#include "tests/support/Exchange.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"

namespace QXPlatform {
namespace {

using backend::LoopbackServer;
using backend::Pacing;
using backend::Request;
using backend::Response;
using support::Exchange;
using support::load;
using support::requestTo;
using Code = URLError::Code;
using namespace std::chrono_literals;

// Sends "/to?<target>" on to the target, answers anything else itself.
LoopbackServer redirecting(int status) {
  return LoopbackServer({.handler = [status](const Request& request) -> std::optional<Response> {
    if (!request.path.starts_with("/to?")) return std::nullopt;
    Response response = Response::redirect(status, request.path.substr(4));
    response.body = "moved";
    return response;
  }});
}

URLRequest secretPost(const std::string& url) {
  URLRequest request = requestTo(url);
  request.httpMethod = "POST";
  request.httpBody = Data("body");
  request.setValueForHTTPHeaderField("token", "Authorization");
  request.setValueForHTTPHeaderField("text/plain", "Content-Type");
  request.setValueForHTTPHeaderField("agent", "User-Agent");
  return request;
}

// The method in which each is followed; an empty one when it is not.
TEST(RedirectTest, NoneLosesABodyOnItsWay) {
  const struct {
    int status;
    std::string ofPost;
    std::string ofPostWithoutBody;
  } table[] = {
      {301, "", "GET"}, {302, "", "GET"}, {303, "", "GET"}, {307, "POST", "POST"}, {308, "POST", "POST"}};
  for (const auto& row : table) {
    for (const bool hasBody : {true, false}) {
      LoopbackServer server = redirecting(row.status);
      URLSession session({});
      URLRequest request = secretPost(server.url("/to?/final"));
      if (!hasBody) request.httpBody.reset();
      const auto outcome = load(session, request);
      const std::string& method = hasBody ? row.ofPost : row.ofPostWithoutBody;
      EXPECT_EQ(outcome.status(), method.empty() ? row.status : 200);
      EXPECT_EQ(outcome.data, Data(method.empty() ? "moved" : "{}"));
      EXPECT_EQ(outcome.response->url().absoluteString(),
                server.url(method.empty() ? "/to?/final" : "/final"));
      ASSERT_EQ(server.requests().size(), method.empty() ? 1U : 2U) << row.status;
      const Request last = server.requests().back();
      EXPECT_EQ(last.method, method.empty() ? "POST" : method) << row.status;
      EXPECT_EQ(last.body, hasBody ? "body" : "") << row.status;
      EXPECT_EQ(last.header("Authorization"), "token");
    }
    LoopbackServer server = redirecting(row.status);
    EXPECT_EQ(load(server.url("/to?/final")).status(), 200);
    EXPECT_EQ(server.requests().back().method, "GET") << row.status;
  }
}

TEST(RedirectTest, AnotherOriginGetsNoneOfTheRequestsOwnHeaders) {
  LoopbackServer other;
  LoopbackServer server = redirecting(307);
  const std::string otherName = "http://localhost:" + std::to_string(server.port()) + "/final";
  URLSession session({});
  for (const std::string& target : {other.url("/final"), otherName}) {
    EXPECT_EQ(load(session, secretPost(server.url("/to?" + target))).status(), 200);
    const Request last = target == otherName ? server.requests().back() : other.requests().back();
    EXPECT_EQ(last.path, "/final");
    EXPECT_EQ(last.header("Authorization"), std::nullopt);
    EXPECT_EQ(last.header("Content-Type"), "text/plain");
    EXPECT_EQ(last.header("User-Agent"), "agent");
    EXPECT_EQ(last.body, "body");
  }
  // Nor does the way back restore them.
  load(session,
       secretPost(server.url("/to?" + otherName.substr(0, otherName.size() - 6) + "/to?" + server.url())));
  EXPECT_EQ(server.requests().back().path, "/");
  EXPECT_EQ(server.requests().back().header("Authorization"), std::nullopt);
}

TEST(RedirectTest, OnlyWherePlainRequestsMayGo) {
  const LoopbackServer server = redirecting(302);
  const std::pair<const char*, Code> table[] = {
      {"ftp://127.0.0.1/a", Code::unsupportedURL},           {"file:///etc/passwd", Code::unsupportedURL},
      {"http://example.invalid/", Code::insecureConnection}, {"//example.invalid/", Code::insecureConnection},
      {"http://127.0.0.1:1/", Code::cannotConnect},
  };
  for (const auto& [target, code] : table) {
    EXPECT_EQ(load(server.url(std::string("/to?") + target)).code(), code) << target;
  }
}

TEST(RedirectTest, TwentyAreFollowedAndNoMore) {
  LoopbackServer server({.handler = [](const Request& request) -> std::optional<Response> {
    const int left = std::stoi(request.path.substr(1));
    if (left == 0) return std::nullopt;
    return Response::redirect(302, std::to_string(left - 1));
  }});
  EXPECT_EQ(load(server.url("/20")).status(), 200);
  EXPECT_EQ(load(server.url("/21")).code(), Code::tooManyRedirects);
}

// Long enough for the transport to notice what has come, and for completions to run.
constexpr auto kMoment = 30ms;

class TimeoutTest : public testing::Test {
 protected:
  void advance(std::chrono::milliseconds duration) {
    std::this_thread::sleep_for(kMoment);
    clock_.advance(duration);
    std::this_thread::sleep_for(kMoment);
  }

  Exchange start(URLSessionConfiguration configuration, URLRequest request) {
    Exchange exchange;
    URLSession(configuration).dataTask(std::move(request), exchange.dataCompletion())->resume();
    return exchange;
  }

  QXTestSupport::ManualClock clock_;
};

TEST_F(TimeoutTest, SilenceEndsInTheShorterOfTheTwoLimits) {
  const LoopbackServer server({.hang = true});
  const std::pair<std::chrono::seconds, std::chrono::seconds> limits[] = {{15s, 60s}, {60s, 15s}};
  std::size_t requests = 0;
  for (const auto& [session, own] : limits) {
    URLRequest request = requestTo(server.url());
    request.timeoutInterval = own;
    const Exchange exchange = start({.timeoutIntervalForRequest = session}, request);
    ASSERT_TRUE(server.waitForRequests(++requests, support::soon()));
    advance(14'900ms);
    EXPECT_EQ(exchange.calls(), 0U);
    advance(200ms);
    const auto outcome = exchange.wait();
    EXPECT_EQ(outcome.code(), Code::timedOut);
    EXPECT_EQ(outcome.error->description(), "127.0.0.1: no progress for 15 s");
  }
}

TEST_F(TimeoutTest, AByteASecondIsProgressUntilTheResourceLimit) {
  LoopbackServer server({.handler = [](const Request&) {
    return Response{.body = std::string(100'000, 'x'), .pacing = Pacing{1, 5ms}};
  }});
  const Exchange exchange =
      start({.timeoutIntervalForRequest = 15s, .timeoutIntervalForResource = 40s}, requestTo(server.url()));
  ASSERT_TRUE(server.waitForRequests(1, support::soon()));
  for (int second = 0; second < 39; ++second) {
    advance(1s);
    ASSERT_EQ(exchange.calls(), 0U) << second;
  }
  advance(1s);
  const auto outcome = exchange.wait();
  EXPECT_EQ(outcome.code(), Code::timedOut);
  EXPECT_EQ(outcome.error->description(), "127.0.0.1: not done within 40 s");
}

TEST_F(TimeoutTest, TheResourceLimitCoversRedirects) {
  LoopbackServer server({.handler = [](const Request&) {
    Response response = Response::redirect(302, "/again");
    response.delay = 40ms;
    return response;
  }});
  const Exchange exchange = start({.timeoutIntervalForResource = 2s}, requestTo(server.url()));
  for (std::size_t hop = 1; hop <= 3; ++hop) {
    server.waitForRequests(hop, support::soon());
    clock_.advance(700ms);
  }
  EXPECT_EQ(exchange.wait().code(), Code::timedOut);
}

}  // namespace
}  // namespace QXPlatform
