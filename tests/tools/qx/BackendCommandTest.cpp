// `qx backend` as a program, asked by a real client.

#include <csignal>

#include "QXPlatform/foundation/JSON.h"
#include "tests/support/Exchange.h"
#include "tests/support/Program.h"
#include "tests/support/Test.h"

namespace {

using QXPlatform::Dictionary;
using QXPlatform::URLError;

support::Exchange::Outcome post(const std::string& url, const std::string& body) {
  QXPlatform::URLRequest request = support::requestTo(url);
  request.httpMethod = "POST";
  request.httpBody = QXPlatform::Data(body);
  QXPlatform::URLSession session({});
  return support::load(session, request);
}

std::string text(const Dictionary& line, const char* key) {
  const auto* value = line.find(key);
  return value == nullptr ? "" : value->description();
}

TEST(BackendCommandTest, SaysWhereItListensThenEveryRequestAndEndsOnASignal) {
  support::RunningProgram backend("qx", {"backend", "--status", "503", "--body", "busy"});
  const std::string url = text(backend.nextLine(), "listening");
  ASSERT_TRUE(url.starts_with("http://127.0.0.1:")) << url;
  const auto answer = post(url + "/a?b=c", R"({"k": [1]})");
  EXPECT_EQ(answer.status(), 503);
  EXPECT_EQ(answer.data, QXPlatform::Data("busy"));
  const Dictionary line = backend.nextLine();
  EXPECT_EQ(text(line, "method"), "POST");
  EXPECT_EQ(text(line, "path"), "/a?b=c");
  EXPECT_EQ(text(line, "body"), R"({"k":[1]})");
  EXPECT_TRUE(line.find("headers")->isDictionary());
  ::kill(backend.id(), SIGTERM);
  EXPECT_EQ(backend.wait().exitCode, 0);
}

TEST(BackendCommandTest, TalksTLSToThoseWhoTrustItsCertificate) {
  support::RunningProgram backend("qx", {"backend", "--tls"});
  const Dictionary first = backend.nextLine();
  const std::string url = text(first, "listening");
  ASSERT_TRUE(url.starts_with("https://")) << url;
  ASSERT_TRUE(std::filesystem::exists(text(first, "caFile")));
  {
    const support::ScopedEnvironment trust("SSL_CERT_FILE", text(first, "caFile"));
    EXPECT_EQ(post(url, "{}").status(), 200);
  }
  ::kill(backend.id(), SIGINT);
  EXPECT_EQ(backend.wait().exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(text(first, "caFile")));
}

TEST(BackendCommandTest, AnswersByItsScriptAndEndsWhenWhatItExpectsHasCome) {
  const support::TemporaryDirectory directory;
  const std::string script = directory.write("script.json", R"([
      {"path": "/a", "method": "post", "times": 1, "status": 503, "headers": {"X-Why": "busy"}, "body": "later"},
      {"path": "/a", "body": {"k": 1}, "delay": 0.05},
      {"path": "/b", "close": true}])");
  support::RunningProgram backend("qx", {"backend", "--script", script, "--expect", "4", "--within", "20"});
  const std::string url = text(backend.nextLine(), "listening");
  // The first, since a request is sent again when a connection that was used before is closed on it.
  EXPECT_EQ(post(url + "/b", "{}").code(), URLError::Code::connectionLost);
  const auto busy = post(url + "/a?b=c", "{}");
  EXPECT_EQ(busy.status(), 503);
  EXPECT_EQ(busy.data, QXPlatform::Data("later"));
  EXPECT_EQ(post(url + "/else", "{}").status(), 200);
  const auto last = post(url + "/a", "{}");
  EXPECT_EQ(last.status(), 200);
  EXPECT_EQ(last.data, QXPlatform::Data(R"({"k":1})"));
  EXPECT_EQ(backend.wait().exitCode, 0);
  EXPECT_EQ(support::runProgram("qx", {"backend", "--expect", "1", "--within", "0.05"}).exitCode, 1);

  const std::pair<const char*, const char*> wrong[] = {
      {"{}", "not a list of answers"},
      {"[{}, {\"stauts\": 500}]", "/1: there is no key \"stauts\"; did you mean \"status\"?"},
      {R"([{"headers": {"X": "a\r\nY: b"}}])", "/0: header X must be one line"},
      {"[{\"status\": 99}]", "/0: status must be from 100 to 599"},
      {"[{\"times\": \"2\"}]", "/0: /times: expected an integer"}};
  for (const auto& [content, said] : wrong) {
    const auto refused =
        support::runProgram("qx", {"backend", "--script", directory.write("wrong.json", content)});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.errors.find(said), std::string::npos) << refused.errors;
  }
}

TEST(BackendCommandTest, APortThatIsTakenIsAnErrorInOneLine) {
  support::RunningProgram backend("qx", {"backend"});
  const std::string url = text(backend.nextLine(), "listening");
  const auto second = support::runProgram("qx", {"backend", "--port", url.substr(url.rfind(':') + 1)});
  EXPECT_EQ(second.exitCode, 1);
  EXPECT_TRUE(second.errors.starts_with("qx backend: cannot listen on port")) << second.errors;
}

}  // namespace
