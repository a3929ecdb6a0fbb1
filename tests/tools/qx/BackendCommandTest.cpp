// `qx backend` as a program, asked by a real client.

#include <csignal>

#include "QXPlatform/foundation/JSON.h"
#include "tests/support/Exchange.h"
#include "tests/support/Program.h"
#include "tests/support/Test.h"

namespace {

using QXPlatform::Dictionary;

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

TEST(BackendCommandTest, APortThatIsTakenIsAnErrorInOneLine) {
  support::RunningProgram backend("qx", {"backend"});
  const std::string url = text(backend.nextLine(), "listening");
  const auto second = support::runProgram("qx", {"backend", "--port", url.substr(url.rfind(':') + 1)});
  EXPECT_EQ(second.exitCode, 1);
  EXPECT_TRUE(second.errors.starts_with("qx backend: cannot listen on port")) << second.errors;
}

}  // namespace
