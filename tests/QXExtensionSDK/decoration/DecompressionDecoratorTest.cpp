#include "QXExtensionSDK/decoration/DecompressionDecorator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "QXPlatform/foundation/Base64.h"
#include "tests/QXExtensionSDK/ServiceTestKit.h"
#include "tests/support/Deflate.h"
#include "tests/support/RecordingLogSink.h"

namespace QXExtensionSDK {
namespace {

using QXPlatform::Dictionary;

constexpr std::size_t kBombSize = 50'000'000;

std::string pack(std::string_view text) {
  return QXPlatform::encodeBase64(support::deflateRaw(text));
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
  const support::ScopedLogRecorder log;
  const auto changes = decorate({{"$_rf", pack(R"({"vt":{"t":"0"},"n":1})")}});
  EXPECT_EQ(changes,
            (Dictionary{{"_rf", Dictionary{{"vt", Dictionary{{"t", "0"}}}, {"n", 1}}}, {"$_rf", ""}}));
  EXPECT_EQ(log->messages(), (std::vector<std::string>{
                                 "Deflate decompression strategy selected", "Deflate: Decompression start",
                                 "Deflate: Decoded char count=22", "Deflate: Decompression success",
                                 "Deflate: Deallocating destination buffer", "Adding decompressed field"}));
}

TEST(DecompressionDecoratorTest, EachFailureHasItsLinesAndChangesNothing) {
  const std::string good = pack(R"({"a":1})");
  const struct {
    const char* what;
    Dictionary userInfo;
    std::vector<std::string> lines;  // those that must be there
  } table[] = {
      {"absent", {}, {"Compressed field not present in user info"}},
      {"number", {{"$_rf", 5}}, {"Invalid compressed field data type in user info"}},
      {"null", {{"$_rf", nullptr}}, {"Invalid compressed field data type in user info"}},
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
       {{"$_rf", pack("")}},
       {"Deflate: Returning nil as decoded char count is zero", "Deflate: Decompression success",
        "Decompression failure"}},
      {"not UTF-8",
       {{"$_rf", pack("\xc3\x28")}},
       {"Deflate: Decompression success", "Decompression failure"}},
      {"65536 bytes",
       {{"$_rf", pack(objectOfSize(65536))}},
       {"Deflate: Decoded char count=65536", "Deflate: Possible buffer overflow while decompressing",
        "Deflate: Deallocating destination buffer", "Decompression failure"}},
      {"a bomb",
       {{"$_rf", pack(std::string(kBombSize, ' '))}},
       {"Deflate: Possible buffer overflow while decompressing"}},
      {"array", {{"$_rf", pack("[1]")}}, {"Can't convert decompressed string to dictionary"}},
      {"no JSON", {{"$_rf", pack("{]")}}, {"Can't convert decompressed string to dictionary"}},
  };
  for (const auto& row : table) {
    const support::ScopedLogRecorder log;
    EXPECT_EQ(decorate(row.userInfo), std::nullopt) << row.what;
    for (const std::string& line : row.lines) EXPECT_TRUE(log->has(line)) << row.what << ": " << line;
    EXPECT_FALSE(log->has("Adding decompressed field")) << row.what;
  }
}

TEST(DecompressionDecoratorTest, TheLargestPayloadIsOneByteUnderTheBuffer) {
  const auto changes = decorate({{"$_rf", pack(objectOfSize(65535))}});
  ASSERT_TRUE(changes.has_value());
  EXPECT_EQ(changes->find("_rf")->find("p")->string()->size(), 65527U);
}

}  // namespace
}  // namespace QXExtensionSDK
