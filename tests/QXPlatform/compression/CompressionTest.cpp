#include "QXPlatform/compression/Compression.h"
#include "tests/support/Deflate.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

using support::deflateRaw;

std::pair<std::size_t, std::string> inflated(std::string_view source, std::size_t capacity) {
  std::string destination(capacity, '\0');
  const std::size_t written =
      compression_decode_buffer(std::as_writable_bytes(std::span(destination)),
                                std::as_bytes(std::span(source)), CompressionAlgorithm::zlib);
  return {written, destination.substr(0, written)};
}

std::string payload() {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "{\"panel\": " + std::to_string(i * 7919 % 10007) + "}, ";
  return text;
}

TEST(CompressionTest, RestoresWhatFits) {
  const std::string text = payload();
  const std::string source = deflateRaw(text);
  const auto whole = std::pair(text.size(), text);
  EXPECT_EQ(inflated(source, text.size() + 1), whole);
  EXPECT_EQ(inflated(source, text.size()), whole);
  EXPECT_EQ(inflated(source + "bytes after the end", 2 * text.size()), whole);
  EXPECT_EQ(inflated(deflateRaw(""), 10), std::pair(std::size_t{0}, std::string()));
}

TEST(CompressionTest, ReturnsTheCapacityWhenTheOutputIsCutOff) {
  const std::string text = payload();
  const std::string source = deflateRaw(text);
  for (const std::size_t capacity : {text.size() - 1, text.size() / 2, std::size_t{1}, std::size_t{0}}) {
    EXPECT_EQ(inflated(source, capacity).first, capacity);
  }
  const std::string zeros(std::size_t{8'000'000}, '\0');
  EXPECT_EQ(inflated(deflateRaw(zeros), 65536).first, 65536U);
}

TEST(CompressionTest, ReturnsNothingForBadOrTruncatedSources) {
  const std::string text = payload();
  const std::string source = deflateRaw(text);
  for (std::size_t length = 0; length < source.size(); ++length) {
    ASSERT_EQ(inflated(std::string_view(source).substr(0, length), 2 * text.size()).first, 0U) << length;
  }
  const std::vector<std::string> table{
      "\x07",                                        // a block type that does not exist
      std::string("\x01\x05\x00\x00\x00hello", 10),  // a stored block whose length check is wrong
      std::string("\x03", 1),                        // ends in the middle of a code
      "\x78\x9c" + source,                           // with a header
      "text that was never compressed",
  };
  for (const std::string& bad : table)
    EXPECT_EQ(inflated(bad, 65536).first, 0U) << testing::PrintToString(bad);
}

}  // namespace
}  // namespace QXPlatform
