#include "QXExtensionSDK/decoration/DecompressionDecorator.h"

#include "QXPlatform/foundation/Base64.h"
#include "tests/QXExtensionSDK/ServiceTestKit.h"
#include "tests/support/Deflate.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using QXPlatform::Dictionary;
using support::packed;

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
