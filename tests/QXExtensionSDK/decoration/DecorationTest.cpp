// The thumbnail from payload to attachment, against a real server.

#include "QXExtensionSDK/decoration/DefaultMediaDownloader.h"

#include "QXExtensionSDK/decoration/DecompressionDecorator.h"
#include "QXExtensionSDK/decoration/MediaURLExtractable.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXTestSupport/ManualClock.h"
#include "tests/QXExtensionSDK/ServiceTestKit.h"
#include "tests/support/Deflate.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"
#include "tools/backend/Panels.h"

namespace QXExtensionSDK {
namespace {

using backend::Fault;
using backend::Request;
using backend::Response;
using QXPlatform::Dictionary;
using support::packed;

// A table of answers by path, each with the file name that the path ends in.
std::optional<Response> answer(const Request& request) {
  const std::string image(backend::panels().front().bytes);
  const auto as = [&](Response response) {
    response.body = response.body.empty() ? image : response.body;
    return response;
  };
  const std::string_view path = request.path;
  if (path.starts_with("/good/")) return as({.headers = {{"Content-Type", "image/png"}}});
  if (path.starts_with("/moved/")) return Response::redirect(302, "/good/other.png");
  if (path.starts_with("/missing/")) return as({.status = 404});
  if (path.starts_with("/html/"))
    return as({.headers = {{"Content-Type", "text/html"}}, .body = "<html></html>"});
  if (path.starts_with("/cut/")) return as({.fault = Fault::truncatedBody});
  if (path.starts_with("/stalled/")) return as({.fault = Fault::neverAnswer});
  if (path.starts_with("/trickle/")) return as({.pacing = backend::Pacing{1, std::chrono::milliseconds(50)}});
  return std::nullopt;
}

Dictionary pushOf(const std::string& imageURL) {
  return support::dictionary(R"({"_sid":"VTQX","_rf":)" +
                             support::carousel(support::plainPanels(1, imageURL)) + "}");
}

class ThumbnailTest : public testing::Test {
 protected:
  QXPlatform::NotificationProperties push(const std::string& url) {
    Deliveries deliveries;
    const auto service = std::make_shared<TestService>();
    service->didReceiveNotificationRequest(makeRequest(pushOf(url)), deliveries.handler());
    EXPECT_TRUE(deliveries.waitFor(1)) << url;
    return deliveries.count() > 0 ? deliveries.at(0) : QXPlatform::NotificationProperties();
  }

  // The debug lines of the attachment step, which alone may speak of it.
  static std::ptrdiff_t attachmentLines(const std::vector<support::LogEntry>& entries) {
    return std::ranges::count_if(entries, [](const support::LogEntry& entry) {
      return entry.category == "CarouselAttachment" && entry.type == QXPlatform::LogType::debug;
    });
  }

  static std::ptrdiff_t whyLines(const std::vector<support::LogEntry>& entries) {
    return std::ranges::count_if(entries, [](const support::LogEntry& entry) {
      return entry.category == "ServiceGeneral" && entry.type == QXPlatform::LogType::error &&
             entry.message.starts_with("Thumbnail not attached: ");
    });
  }

  // What lies anywhere in the temporary directory.
  std::size_t filesLeft() const {
    std::size_t files = 0;
    std::error_code error;  // what is being removed at the moment counts as well
    std::filesystem::recursive_directory_iterator entry(temporary_.path(), error);
    for (; !error && entry != end(entry); entry.increment(error)) {
      files += entry->is_regular_file(error) ? 1U : 0U;
    }
    return error ? files + 1 : files;
  }

  support::TemporaryDirectory temporary_;
  support::ScopedEnvironment environment_{"TMPDIR", temporary_.path()};
  backend::LoopbackServer server_{{.handler = answer}};
};

TEST_F(ThumbnailTest, TheFirstPanelsImageBecomesTheOnlyAttachment) {
  for (const std::string path : {"/good/first.png", "/moved/first.png", "/good/dir/first%2epng?size=2#x"}) {
    const auto delivered = push(server_.url(path));
    ASSERT_EQ(delivered.attachments.size(), 1U) << path;
    EXPECT_EQ(delivered.attachments[0].identifier(), "SomeAttachmentId");
    const std::filesystem::path file = delivered.attachments[0].url().filePath();
    EXPECT_EQ(file.filename(), "first.png") << "named after the URL that was asked for";
    EXPECT_EQ(std::filesystem::file_size(file), backend::panels().front().bytes.size());
    EXPECT_TRUE(file.native().starts_with(temporary_.path()));
  }
}

TEST_F(ThumbnailTest, WhateverGoesWrongTheNotificationIsDeliveredWithoutIt) {
  const struct {
    std::string url;
    std::string_view line;  // of the attachment step; empty: it is silent
  } table[] = {
      {server_.url("/missing/a.png"), ""},
      {server_.url("/html/a.png"), "Attachment creation failure: "},
      {server_.url("/good/no-extension"), "Attachment creation failure: "},
      {server_.url("/cut/a.png"), "Attachment media download error: "},
      {"file:///etc/hostname", "Attachment media download error: "},
      {"a.png", "Attachment media download error: "},
      {server_.url("/good/."), "Attachment media remove/move error: "},
      {server_.url("/good/.."), "Attachment media remove/move error: "},
      {server_.url("/good/..%2f..%2fescape.png"), "Attachment media remove/move error: "},
      {server_.url("/good/nul%00.png"), "Attachment media remove/move error: "},
      {server_.url("/good/" + std::string(300, 'n') + ".png"), "Attachment media remove/move error: "},
      {"", "Carousel Media URL Extraction Failure"},
      {"http://bad host/", "Carousel Media URL Extraction Failure"},
  };
  for (const auto& row : table) {
    const support::ScopedLogRecorder log;
    EXPECT_TRUE(push(row.url).attachments.empty()) << row.url;
    EXPECT_EQ(attachmentLines(log->entries()), row.line.empty() ? 0 : 1) << row.url;
    EXPECT_TRUE(row.line.empty() || log->mentions(row.line)) << row.url;
    EXPECT_EQ(whyLines(log->entries()), 1) << row.url;
    // A download that is not taken is removed right after the completion, which delivers, has returned.
    EXPECT_TRUE(support::eventually([this] { return filesLeft() == 0; })) << row.url;
  }
}

TEST_F(ThumbnailTest, StalledAndTricklingDownloadsEndAfterFifteenSeconds) {
  for (const std::string path : {"/stalled/a.png", "/trickle/a.png"}) {
    const support::ScopedLogRecorder log;
    QXTestSupport::ManualClock clock;
    Deliveries deliveries;
    const std::size_t before = server_.requests().size();
    const auto service = std::make_shared<TestService>();
    service->didReceiveNotificationRequest(makeRequest(pushOf(server_.url(path))), deliveries.handler());
    ASSERT_TRUE(server_.waitForRequests(before + 1, support::soon()));
    service->serviceExtensionTimeWillExpire();
    ASSERT_TRUE(deliveries.waitFor(1));
    EXPECT_EQ(whyLines(log->entries()), 1) << path;
    const auto seconds = clock.secondsUntil([&] { return deliveries.count() == 2; }, 15);
    // The last byte of the request may count as sent in the first second.
    EXPECT_GE(seconds, 15) << path;
    EXPECT_LE(seconds, 16) << path;
    ASSERT_EQ(deliveries.count(), 2U) << path;
    EXPECT_TRUE(deliveries.at(1).attachments.empty());
    EXPECT_EQ(whyLines(log->entries()), 1) << path << ": once a push";
    EXPECT_TRUE(log->mentions("Attachment media download error: ")) << path;
  }
  EXPECT_TRUE(support::eventually([this] { return filesLeft() == 0; }));
}

TEST_F(ThumbnailTest, AFileOfTheSameNameIsReplaced) {
  DefaultMediaDownloader downloader(std::make_shared<ThumbnailReport>());
  std::optional<QXPlatform::URL> earlier;
  for (int i = 0; i < 2; ++i) {
    std::promise<std::optional<QXPlatform::URL>> downloaded;
    downloader.download(*QXPlatform::URL::parse(server_.url("/good/same.png")),
                        [&](const auto& file) { downloaded.set_value(file); });
    const auto file = downloaded.get_future().get();
    ASSERT_TRUE(file);
    EXPECT_TRUE(!earlier || *file == *earlier);
    EXPECT_EQ(std::filesystem::file_size(file->filePath()), backend::panels().front().bytes.size());
    // Were the file kept, this would show.
    std::filesystem::resize_file(file->filePath(), 1);
    earlier = file;
  }
}

TEST_F(ThumbnailTest, TheThumbnailReplacesTheAttachmentsThatThereWere) {
  const std::string old = temporary_.write("old.png", "GIF89a");
  QXPlatform::NotificationProperties properties;
  properties.userInfo = pushOf(server_.url("/good/new.png"));
  properties.attachments = {*QXPlatform::UNNotificationAttachment::make("old", QXPlatform::URL::file(old))};
  Deliveries deliveries;
  const auto service = std::make_shared<TestService>();
  service->didReceiveNotificationRequest(support::requestWith(properties), deliveries.handler());
  ASSERT_TRUE(deliveries.waitFor(1));
  ASSERT_EQ(deliveries.at(0).attachments.size(), 1U);
  EXPECT_EQ(deliveries.at(0).attachments[0].identifier(), "SomeAttachmentId");
}

TEST(CarouselMediaURLExtractorTest, OnlyAWellFormedFirstPanelHasAURL) {
  const struct {
    const char* richFeatures;
    const char* url;
  } table[] = {
      {R"({"vt":{"it":[{"md":{"ul":"https://a/b.png"}},{"md":{"ul":"https://a/c.png"}}]}})",
       "https://a/b.png"},
      {R"({"vt":{"it":[{"md":{"ul":"b.png"}}]}})", "b.png"},
      {R"({"vt":{"it":[{},{"md":{"ul":"https://a/c.png"}}]}})", nullptr},
      {R"({"vt":{"it":[{"md":{"ul":"https://a/b.png"}},7]}})", nullptr},
      {R"({"vt":{"it":[{"md":{"ul":""}}]}})", nullptr},
      {R"({"vt":{"it":[{"md":{"ul":5}}]}})", nullptr},
      {R"({"vt":{"it":[{"md":"https://a/b.png"}]}})", nullptr},
      {R"({"vt":{"it":{}}})", nullptr},
      {R"({"vt":{"it":[]}})", nullptr},
      {R"({"vt":[]})", nullptr},
      {R"({})", nullptr},
  };
  for (const auto& row : table) {
    const auto url =
        CarouselMediaURLExtractor().mediaURL(*QXPlatform::parseJSON(row.richFeatures)->dictionary());
    const auto text = url ? std::optional<std::string>(url->absoluteString()) : std::nullopt;
    EXPECT_EQ(text, row.url != nullptr ? std::optional<std::string>(row.url) : std::nullopt)
        << row.richFeatures;
  }
}

// A JSON object of exactly so many bytes.
std::string objectOfSize(std::size_t size) {
  return R"({"p":")" + std::string(size - 8, 'x') + R"("})";
}

UserInfoChanges decorate(const Dictionary& userInfo) {
  const Logger& logger = Logger::service();
  Logger::setGlobalLoglevel(0);
  const DecompressionDecorator decorator(logger,
                                         std::make_unique<const ConcreteDecompressionContext>(logger));
  return decorator.decorate(userInfo, *makeRequest(userInfo));
}

TEST(DecompressionDecoratorTest, InflatesTheFieldAndBlanksIt) {
  EXPECT_EQ(decorate({{"$_rf", packed(R"({"vt":{"t":"0"},"n":1})")}}),
            (Dictionary{{"_rf", Dictionary{{"vt", Dictionary{{"t", "0"}}}, {"n", 1}}}, {"$_rf", ""}}));
}

TEST(DecompressionDecoratorTest, EachFailureHasItsLinesAndChangesNothing) {
  const std::string good = packed(R"({"a":1})");
  const struct {
    const char* what;
    Dictionary userInfo;
    std::vector<std::string> lines;  // those that must be there
  } table[] = {
      {"absent", {}, {"Compressed field not present in user info"}},
      {"number", {{"$_rf", 5}}, {"Invalid compressed field data type in user info"}},
      {"line break",
       {{"$_rf", good.substr(0, 4) + "\n" + good.substr(4)}},
       {"Deflate: Base64 decoding failed", "Decompression failure"}},
      {"empty",
       {{"$_rf", ""}},
       {"Deflate: Typed pointer base address nil", "Deflate: Decompression success",
        "Decompression failure"}},
      {"not deflate",
       {{"$_rf", QXPlatform::encodeBase64("\xff\xff\xff\xff")}},
       {"Deflate: Decoded char count=0", "Deflate: Returning nil as decoded char count is zero",
        "Deflate: Decompression success", "Decompression failure"}},
      {"empty output",
       {{"$_rf", packed("")}},
       {"Deflate: Returning nil as decoded char count is zero", "Deflate: Decompression success",
        "Decompression failure"}},
      {"not UTF-8",
       {{"$_rf", packed("\xc3\x28")}},
       {"Deflate: Decompression success", "Decompression failure"}},
      {"65536 bytes",
       {{"$_rf", packed(objectOfSize(65536))}},
       {"Deflate: Decoded char count=65536", "Deflate: Possible buffer overflow while decompressing",
        "Deflate: Deallocating destination buffer", "Decompression failure"}},
      {"array", {{"$_rf", packed("[1]")}}, {"Can't convert decompressed string to dictionary"}},
      {"no JSON", {{"$_rf", packed("{]")}}, {"Can't convert decompressed string to dictionary"}},
  };
  for (const auto& row : table) {
    const support::ScopedLogRecorder log;
    EXPECT_EQ(decorate(row.userInfo), std::nullopt) << row.what;
    for (const std::string& line : row.lines) EXPECT_TRUE(log->has(line)) << row.what << ": " << line;
    EXPECT_FALSE(log->has("Adding decompressed field")) << row.what;
  }
}

TEST(DecompressionDecoratorTest, TheLargestPayloadIsOneByteUnderTheBuffer) {
  const auto changes = decorate({{"$_rf", packed(objectOfSize(65535))}});
  ASSERT_TRUE(changes.has_value());
  EXPECT_EQ(changes->find("_rf")->find("p")->string()->size(), 65527U);
}

}  // namespace
}  // namespace QXExtensionSDK
