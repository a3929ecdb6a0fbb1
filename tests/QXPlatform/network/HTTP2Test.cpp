// Another program's server, since the loopback back end speaks HTTP/1.1 alone.

#include "tests/support/ChildProcess.h"
#include "tests/support/Exchange.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"
#include "tools/backend/ThrowAwayCertificate.h"

namespace QXPlatform {
namespace {

using support::load;
using support::requestTo;
using testing::HasSubstr;

// Serves the files of a directory and sends back what is posted.
class Nghttpd {
 public:
  Nghttpd(const support::TemporaryDirectory& files, const backend::ThrowAwayCertificate& certificate)
      : log_(files.path("log")), key_(files.write("key", certificate.keyPEM())), process_([&] {
          if (std::freopen(log_.c_str(), "w", stdout) == nullptr) return;
          ::execl(QX_NGHTTPD, "nghttpd", "--verbose", "--echo-upload", "--address=127.0.0.1",
                  ("--htdocs=" + files.path()).c_str(), port_.c_str(), key_.c_str(),
                  certificate.caFile().c_str(), nullptr);
        }) {}

  std::string url(const std::string& path) const { return "https://127.0.0.1:" + port_ + path; }
  std::string log() const {
    std::ifstream stream(log_);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void stop() { process_.kill(); }

 private:
  const std::string port_ = std::to_string(backend::LoopbackServer().port());  // free again
  const std::string log_;
  const std::string key_;
  support::ChildProcess process_;
};

TEST(HTTP2Test, RequestsShareAConnectionThatSpeaksIt) {
  const support::TemporaryDirectory files;
  const std::string large(1'000'000, 'x');
  files.write("large", large);
  const backend::ThrowAwayCertificate certificate;
  const support::ScopedEnvironment trusted("SSL_CERT_FILE", certificate.caFile().string());
  Nghttpd server(files, certificate);
  ASSERT_TRUE(
      support::eventually([&] { return server.log().find("listen 127.0.0.1") != std::string::npos; }));

  URLSession session({});
  EXPECT_EQ(load(session, requestTo(server.url("/large"))).data, Data(large));
  URLRequest post = requestTo(server.url("/echo"));
  post.httpMethod = "POST";
  post.httpBody = Data(large);
  post.setValueForHTTPHeaderField("token", "Authorization");
  const auto answer = load(session, post);
  EXPECT_EQ(answer.status(), 200);
  EXPECT_EQ(answer.data, Data(large));

  const std::string log = server.log();
  const auto handshake = log.find("The negotiated protocol: h2");
  ASSERT_NE(handshake, std::string::npos);
  EXPECT_EQ(log.find("The negotiated protocol", handshake + 1), std::string::npos);
  EXPECT_THAT(log, HasSubstr("(stream_id=1) :method: GET"));
  EXPECT_THAT(log, HasSubstr("(stream_id=3) :method: POST"));
  EXPECT_THAT(log, HasSubstr(" authorization: token"));

  server.stop();
  EXPECT_EQ(load(session, post).code(), URLError::Code::cannotConnect);
}

}  // namespace
}  // namespace QXPlatform
