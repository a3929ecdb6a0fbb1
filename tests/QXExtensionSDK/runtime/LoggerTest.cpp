#include "QXExtensionSDK/runtime/logging/Logger.h"

#include "QXExtensionSDK/QXExtensionSDK.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {
namespace {

using QXPlatform::LogType;

// Read before any test or configuration changes it.
const std::int64_t kInitialLevel = Logger::globalLoglevel();

TEST(LoggerTest, TheLevelDecidesWhichMessagesAreWritten) {
  const std::vector<std::vector<std::string>> written{
      {"d", "w", "e", "f"}, {"w", "e", "f"}, {"e", "f"}, {"f"}, {}, {}};
  EXPECT_EQ(kInitialLevel, 2) << "before a configuration only errors and faults pass";
  for (std::size_t level = 0; level < written.size(); ++level) {
    const support::ScopedLogRecorder log;
    Logger::setGlobalLoglevel(static_cast<std::int64_t>(level));
    Logger::service().debug(LogCategory::module, "d");
    Logger::service().warnWithCatgeory(LogCategory::module, "w");
    Logger::service().errorWithCatgeory(LogCategory::module, "e");
    Logger::service().fault(LogCategory::module, "f");
    EXPECT_EQ(log->messages(), written[level]) << "level " << level;
  }
}

TEST(LoggerTest, RecordsCarrySubsystemCategoryTypeAndJoinedPieces) {
  const support::ScopedLogRecorder log;
  _VTQX_Internal_Logger::setGlobalLoglevel(0);
  Logger::service().warn(LogCategory::serviceWorker, "n=", 5, " ok=", true, " ", std::string("text"));
  Logger::content().debug(LogCategory::ui, QXPlatform::Dictionary{{"a", 1}});
  const std::vector<support::LogEntry> expected{
      {"ServiceExtension", "ServiceWorker", LogType::default_, "n=5 ok=true text"},
      {"ContentExtension", "UI", LogType::debug, R"({"a":1})"}};
  EXPECT_EQ(log->entries(), expected);
}

TEST(LoggerTest, AFilteredMessageIsNeverBuilt) {
  struct Tattler {
    std::string description() const {
      ADD_FAILURE() << "built although filtered out";
      return {};
    }
  };
  Logger::setGlobalLoglevel(4);
  Logger::service().fault(LogCategory::module, Tattler{});
}

TEST(LoggerTest, CategoriesAndLevelsComeFromTheirNumbers) {
  EXPECT_EQ(categoryString(static_cast<LogCategory>(6)), "CarouselAttachment");
  EXPECT_DEATH(categoryString(static_cast<LogCategory>(9)), "log category");
  EXPECT_DEATH(categoryString(static_cast<LogCategory>(-1)), "log category");
  EXPECT_EQ(makeLogLevel(4), LogLevel::none);
  EXPECT_EQ(makeLogLevel(5), std::nullopt);
  EXPECT_EQ(makeLogLevel(-1), std::nullopt);
}

}  // namespace
}  // namespace QXExtensionSDK
