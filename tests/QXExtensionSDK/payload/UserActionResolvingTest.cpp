#include "QXExtensionSDK/payload/UserActionResolving.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/RecordingLogSink.h"

namespace QXExtensionSDK {
namespace {

using Actions = std::vector<ActionSerDeWrapper>;

TEST(UserActionResolvingTest, TakesTheFirstActionAndItsURL) {
  support::ScopedLogRecorder log;
  const auto app = resolveUserAction(Actions{{OpenAppAction{}}, {OpenWebUrlAction{.url = "https://b"}}},
                                     Logger::content());
  EXPECT_EQ(app, (UserAction{ActionType::openApp, std::nullopt}));

  struct Case {
    Action action;
    ActionType kind;
  };
  const Case links[] = {{OpenDeeplinkAction{.url = "app:x"}, ActionType::openDeepLink},
                        {OpenWebUrlAction{.url = "app:x"}, ActionType::openWebUrl},
                        {OpenCloudPageAction{.url = "app:x"}, ActionType::openCloudPage}};
  for (const Case& each : links) {
    EXPECT_EQ(resolveUserAction(Actions{{each.action}}, Logger::content()),
              (UserAction{each.kind, QXPlatform::URL::parse("app:x")}));
  }
  EXPECT_TRUE(log->entries().empty());
}

TEST(UserActionResolvingTest, SaysWhyThereIsNoAction) {
  struct Case {
    std::optional<Actions> actions;
    std::string message;
  };
  const Case cases[] = {
      {std::nullopt, "Actions array is missing"},
      {Actions{}, "Actions array is empty"},
      {Actions{{OpenDeeplinkAction{}}, {OpenAppAction{}}}, "Invalid action state for openDeepLink"},
      {Actions{{OpenWebUrlAction{.url = "not a url"}}}, "Invalid action state for openWebUrl"},
      {Actions{{OpenCloudPageAction{.url = ""}}}, "Invalid action state for openCloudPage"},
  };
  for (const Case& each : cases) {
    support::ScopedLogRecorder log;
    EXPECT_EQ(resolveUserAction(each.actions, Logger::content()), std::nullopt);
    EXPECT_THAT(log->entries(),
                testing::ElementsAre(support::LogEntry{"ContentExtension", "ContentGeneral",
                                                       QXPlatform::LogType::error, each.message}));
  }
}

}  // namespace
}  // namespace QXExtensionSDK
