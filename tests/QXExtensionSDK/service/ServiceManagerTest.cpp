// What cannot be provoked over a socket, and the order of completion and log line.

#include "QXExtensionSDK/service/ServiceManager.h"

#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXExtensionSDK/service/DefaultRequestBuilder.h"
#include "QXExtensionSDK/service/JSONResponseDecoder.h"
#include "QXExtensionSDK/service/URLSessionExecutor.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using QXPlatform::Data;
using QXPlatform::Dictionary;
using QXPlatform::HTTPURLResponse;
using QXPlatform::URL;
using QXPlatform::URLError;

const URL kURL = *URL::parse("https://example.com/a");

struct Executed {
  int calls = 0;
  std::optional<Data> data;
  std::optional<std::string> error;

  NetworkExecutor::Completion completion() {
    return [this](const QXPlatform::Result<Data, SendError>& answer) {
      ++calls;
      if (answer) {
        data = *answer;
      } else {
        error = description(answer.error());
      }
    };
  }
};

TEST(URLSessionExecutorTest, OnlyAnHTTPAnswerFrom200To299IsGood) {
  const std::vector<std::pair<int, std::optional<std::string>>> cases{
      {199, "Failed with status code: 199 and data 2 bytes."},
      {200, std::nullopt},
      {299, std::nullopt},
      {300, "Failed with status code: 300 and data 2 bytes."}};
  for (const auto& [status, error] : cases) {
    Executed executed;
    const HTTPURLResponse response(kURL, status, {});
    URLSessionExecutor::answer(Data("{}"), &response, std::nullopt, executed.completion());
    EXPECT_EQ(executed.calls, 1) << status;
    EXPECT_EQ(executed.error, error) << status;
    EXPECT_EQ(executed.data.has_value(), !error) << status;
  }
}

TEST(URLSessionExecutorTest, AnErrorComesBeforeMissingDataAndThatBeforeTheAnswersKind) {
  const QXPlatform::URLResponse notHTTP(kURL);
  Executed executed;
  URLSessionExecutor::answer(std::nullopt, &notHTTP, URLError{URLError::Code::timedOut, "late"},
                             executed.completion());
  EXPECT_EQ(executed.error, "late");
  URLSessionExecutor::answer(std::nullopt, &notHTTP, std::nullopt, executed.completion());
  EXPECT_EQ(executed.error, "No data returned.");
  URLSessionExecutor::answer(Data("{}"), &notHTTP, std::nullopt, executed.completion());
  URLSessionExecutor::answer(Data("{}"), nullptr, std::nullopt, executed.completion());
  EXPECT_EQ(executed.calls, 2);
}

struct TestRequest final : ServiceProtocol {
  URL url() const override { return kURL; }
  HTTPMethod method() const override { return HTTPMethod::put; }
  Headers headers() const override { return {{"Authorization", "Bearer secret"}, {"X", "y"}}; }
  std::optional<Dictionary> body() const override { return requestBody; }

  std::optional<Dictionary> requestBody;
};

// Answers on the caller's thread.
class ScriptedExecutor final : public NetworkExecutor {
 public:
  explicit ScriptedExecutor(std::string body) : body_(std::move(body)) {}
  void execute(QXPlatform::URLRequest request, Completion completion) override {
    EXPECT_EQ(request.timeoutInterval, std::chrono::seconds(60));
    completion(Data(body_));
  }

 private:
  const std::string body_;
};

// The outcome, and what was logged before and after the completion.
std::vector<std::string> send(const TestRequest& request, std::string answer) {
  Logger::setGlobalLoglevel(0);
  const support::ScopedLogRecorder log;
  const ServiceManager manager(std::make_unique<const DefaultRequestBuilder>(),
                               std::make_shared<const JSONResponseDecoder<DeliveryReceiptResponse>>(),
                               std::make_unique<ScriptedExecutor>(std::move(answer)));
  std::vector<std::string> story;
  manager.send(request, [&](const ServiceManager::Answer& outcome) {
    EXPECT_TRUE(log->entries().empty());
    story.push_back(outcome ? "success" : description(outcome.error()));
  });
  for (const auto& entry : log->entries()) EXPECT_EQ(entry.subsystem, "ServiceExtension");
  std::ranges::copy(log->lines(), std::back_inserter(story));
  return story;
}

TEST(ServiceManagerTest, CompletesFirstAndLogsAfterwards) {
  TestRequest request;
  EXPECT_EQ(send(request, R"({"code":3000.0,"message":"m","requestId":null,"body":[1],"other":1})"),
            (std::vector<std::string>{"success",
                                      "debug Network: ServiceManager success code: 3000, message: 1 bytes, "
                                      "requestId: nil, with a body"}));
  EXPECT_EQ(send(request, R"({"code":1.5})"),
            (std::vector<std::string>{
                "Error decoding data /code: expected an integer, found a fraction.",
                "error Network: ServiceManager ResponseDecoder error Error decoding data /code: expected an "
                "integer, found a fraction."}));
  request.requestBody = Dictionary{{"when", QXPlatform::Date{0}}};
  const auto story = send(request, "{}");
  ASSERT_EQ(story.size(), 2U);
  EXPECT_TRUE(story[0].starts_with("Error encoding data "));
  EXPECT_EQ(story[1], "error Network: ServiceManager RequestBuilder error " + story[0]);
}

TEST(DefaultRequestBuilderTest, ABodyIsCompactJSONAndNoBodyIsNone) {
  TestRequest request;
  const auto bare = DefaultRequestBuilder().build(request);
  ASSERT_TRUE(bare);
  EXPECT_EQ(bare->httpMethod, "PUT");
  EXPECT_FALSE(bare->httpBody.has_value());
  EXPECT_EQ(bare->headers().size(), 2U);
  request.requestBody = Dictionary{{"b", 1}, {"a", "x"}};
  EXPECT_EQ(DefaultRequestBuilder().build(request)->httpBody, Data(R"({"a":"x","b":1})"));
  EXPECT_EQ(request.description().find("secret"), std::string::npos);
  EXPECT_NE(request.description().find("Authorization"), std::string::npos);
}

}  // namespace
}  // namespace QXExtensionSDK
