// `qx backend` as a program, asked by a real client.

#include <boost/process.hpp>
#include <csignal>

#include "QXPlatform/foundation/JSON.h"
#include "tests/support/Exchange.h"
#include "tests/support/Program.h"
#include "tests/support/Test.h"

namespace {

using QXPlatform::Dictionary;
using QXPlatform::URLError;

class Backend {
 public:
  explicit Backend(const std::vector<std::string>& arguments)
      : child_(support::programPath("qx"), "backend", boost::process::args(arguments),
               boost::process::std_out > output_) {}
  ~Backend() { child_.terminate(); }
  Backend(const Backend&) = delete;
  Backend& operator=(const Backend&) = delete;

  Dictionary nextLine() {
    std::string line;
    std::getline(output_, line);
    const auto parsed = QXPlatform::parseJSON(line);
    EXPECT_TRUE(parsed) << line;
    return parsed ? parsed->dictionary().value_or(Dictionary()) : Dictionary();
  }
  int endWith(int signal) {
    ::kill(child_.id(), signal);
    EXPECT_TRUE(support::eventually([this] { return !child_.running(); }));
    return child_.exit_code();
  }

 private:
  boost::process::ipstream output_;
  boost::process::child child_;
};

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
  Backend backend({"--status", "503", "--body", "busy"});
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
  EXPECT_EQ(backend.endWith(SIGTERM), 0);
}

TEST(BackendCommandTest, TalksTLSToThoseWhoTrustItsCertificate) {
  Backend backend({"--tls"});
  const Dictionary first = backend.nextLine();
  const std::string url = text(first, "listening");
  ASSERT_TRUE(url.starts_with("https://")) << url;
  ASSERT_TRUE(std::filesystem::exists(text(first, "caFile")));
  {
    const support::ScopedEnvironment trust("SSL_CERT_FILE", text(first, "caFile"));
    EXPECT_EQ(post(url, "{}").status(), 200);
  }
  EXPECT_EQ(backend.endWith(SIGINT), 0);
  EXPECT_FALSE(std::filesystem::exists(text(first, "caFile")));
}

TEST(BackendCommandTest, MisbehavesAsItIsTold) {
  Backend backend({"--close"});
  EXPECT_EQ(post(text(backend.nextLine(), "listening"), "{}").code(), URLError::Code::connectionLost);
}

TEST(BackendCommandTest, APortThatIsTakenIsAnErrorInOneLine) {
  Backend backend({});
  const std::string url = text(backend.nextLine(), "listening");
  const auto second = support::runProgram("qx", {"backend", "--port", url.substr(url.rfind(':') + 1)});
  EXPECT_EQ(second.exitCode, 1);
  EXPECT_TRUE(second.errors.starts_with("qx backend: cannot listen on port")) << second.errors;
}

}  // namespace
