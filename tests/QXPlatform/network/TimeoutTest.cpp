#include <gtest/gtest.h>

#include <thread>

#include "QXPlatform/network/URLSession.h"
#include "tests/QXPlatform/network/Exchange.h"
#include "tests/support/ManualClock.h"
#include "tools/backend/LoopbackServer.h"

namespace QXPlatform {
namespace {

using backend::LoopbackServer;
using backend::Pacing;
using backend::Request;
using backend::Response;
using Code = URLError::Code;
using namespace std::chrono_literals;

// Long enough for the network thread to notice what has come, and for completions to run.
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

  support::InstalledManualClock clock_;
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
    EXPECT_EQ(exchange.calls(), 0);
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
    ASSERT_EQ(exchange.calls(), 0) << second;
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
