#include <gtest/gtest.h>

#include <limits>

#include "QXExtensionSDK/payload/JSONConvertible.h"
#include "QXExtensionSDK/payload/JSONParser.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "tests/support/RecordingLogSink.h"

namespace QXExtensionSDK {
namespace {

using QXPlatform::Date;
using QXPlatform::Dictionary;

class JSONUtilitiesTest : public testing::Test {
 protected:
  JSONUtilitiesTest() { Logger::setGlobalLoglevel(0); }

  support::ScopedLogRecorder log_;
};

TEST_F(JSONUtilitiesTest, ADictionaryThatJSONCannotHoldIsRefusedWithItsLine) {
  const Dictionary dated{{"when", Date{0}}};
  EXPECT_EQ(JSONConvertible().jsonString(dated, Logger::content(), LogCategory::contentGeneral),
            std::nullopt);
  EXPECT_EQ(log_->entries().at(0),
            (support::LogEntry{"ContentExtension", "ContentGeneral", QXPlatform::LogType::error,
                               "Dictionary is not valid json convertible object"}));
  EXPECT_EQ(JSONParser().jsonString(dated), std::nullopt);
  EXPECT_TRUE(log_->mentions("Error converting dictionary to JSON: "));
}

TEST_F(JSONUtilitiesTest, TextIsPrettyPrintedAndReadsBack) {
  const Dictionary dictionary{{"a", 1}, {"b", "x"}};
  const auto text = JSONParser().jsonString(dictionary);
  EXPECT_EQ(text, "{\n  \"a\" : 1,\n  \"b\" : \"x\"\n}");
  EXPECT_EQ(JSONConvertible().jsonString(dictionary, Logger::service(), LogCategory::serviceGeneral), text);
  EXPECT_EQ(JSONParser().dictionary(*text), dictionary);
  EXPECT_TRUE(log_->has("Conversion from JSON string to dictionary: {\"a\":1,\"b\":\"x\"}"));
}

TEST_F(JSONUtilitiesTest, OnlyAnObjectBecomesADictionary) {
  EXPECT_EQ(VTQXUtility::dictionary(R"({"a":1})"), (Dictionary{{"a", 1}}));
  EXPECT_EQ(VTQXUtility::dictionary("[1]"), std::nullopt);
  EXPECT_EQ(JSONParser().dictionary("[1]"), std::nullopt);
  EXPECT_FALSE(log_->mentions("rror"));
  EXPECT_EQ(VTQXUtility::dictionary("{"), std::nullopt);
  EXPECT_TRUE(log_->mentions("Can't convert data to dictionary, error="));
  EXPECT_EQ(JSONParser().dictionary("{"), std::nullopt);
  EXPECT_TRUE(log_->mentions("Error converting JSON string to dictionary: "));
}

TEST_F(JSONUtilitiesTest, ADateThatHasNoTextIsLogged) {
  EXPECT_EQ(VTQXUtility::dateString(Date{1714554187.25}), "2024-05-01T09:03:07.250Z");
  EXPECT_EQ(VTQXUtility::dateString(Date{std::numeric_limits<double>::quiet_NaN()}), std::nullopt);
  EXPECT_TRUE(log_->has("DateString conversion failure"));
}

}  // namespace
}  // namespace QXExtensionSDK
