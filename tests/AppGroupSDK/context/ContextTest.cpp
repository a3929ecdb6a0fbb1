#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "AppGroupSDK/context/ContextModuleChecker.h"
#include "AppGroupSDK/context/PNContextUtils.h"
#include "AppGroupSDK/context/PNDestinationModuleMapping.h"
#include "QXPlatform/foundation/Base64.h"
#include "tests/support/RecordingLogSink.h"

namespace AppGroupSDK {
namespace {

using enum ExtensionModuleName;
using enum PNContextDestination;

const PNContextInfo kDefault(PNContextSource::none, {0}, std::nullopt);

PNContextInfo context(std::int64_t source, std::vector<std::int64_t> destinations,
                      std::optional<std::string> businessUnit = std::nullopt) {
  return {QXPlatform::fromRawValue<PNContextSource>(source).value(), std::move(destinations),
          std::move(businessUnit)};
}

PNContextInfo parse(const std::string& plain) {
  return PNContextUtils::parseContextInfoFromContextString(QXPlatform::encodeBase64(plain));
}

TEST(PNContext, ReadsThreeFields) {
  const std::pair<std::string, PNContextInfo> cases[] = {
      {"3:6:BU-7", context(1, {2, 4}, "BU-7")},
      {"0:2:", context(0, {2})},
      {"1:0:", context(1, {0})},
      {"2:7: b ", context(2, {1, 2, 4}, " b ")},
      {"4:8:", kDefault},
      {"::", kDefault},
      {"::x", context(0, {0}, "x")},
      {"+1:+2:", context(1, {2})},
      {"-1:-2:", kDefault},
      {"+-1:--1:", kDefault},
      {" 1:2 :", kDefault},
      {"0x1:1e1:", kDefault},
      {"1.0:\xD9\xA1:", kDefault},
      {"9223372036854775807:9223372036854775808:", context(1, {0})},
      {"1:1:\xC3\xA9", context(1, {1}, "\xC3\xA9")},
  };
  for (const auto& [plain, info] : cases) EXPECT_EQ(parse(plain), info) << plain;
}

TEST(PNContext, TakesTheDefaultForWhatIsNone) {
  for (const auto* plain : {"", "1:2", "1:2:3:4", "1", "1:2:\xFF", "\xEF\xBB"}) {
    EXPECT_EQ(parse(plain), kDefault) << plain;
  }
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContextString("3:6:BU-7"), kDefault);
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContextString("Mzo2OkJVLTc"), kDefault);
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContextString(" \nMzo2OkJVLTc=\t"), parse("3:6:BU-7"));
}

TEST(PNContext, IsTheTextUnderItsKey) {
  QXPlatform::NotificationProperties properties;
  properties.userInfo = {{"_co", "Mzo2OkJVLTc="}};
  const QXPlatform::UNNotificationContent content(properties);
  EXPECT_EQ(PNContextUtils::extractContextFieldFromContent(content), "Mzo2OkJVLTc=");
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContent(content), parse("3:6:BU-7"));
  properties.userInfo = {{"_co", 7}};
  const QXPlatform::UNNotificationContent other(properties);
  EXPECT_EQ(PNContextUtils::extractContextFieldFromContent(other), std::nullopt);
  EXPECT_EQ(PNContextUtils::parseContextInfoFromContent(other), kDefault);
  EXPECT_EQ(PNContextUtils::parseContextInfoFromUserInfo({}), kDefault);
}

TEST(PNContext, CountsAsAbsentWhenItSaysNothing) {
  EXPECT_TRUE(kDefault.isInavlidOrAbsentContext());
  EXPECT_TRUE(context(0, {}).isInavlidOrAbsentContext());
  EXPECT_TRUE(context(0, {3, 0}).isInavlidOrAbsentContext()) << "unknown numbers are dropped first";
  for (const auto& info :
       {context(1, {0}), context(0, {0}, "b"), context(0, {0, 0}), context(0, {3}), context(0, {2})}) {
    EXPECT_FALSE(info.isInavlidOrAbsentContext()) << info.description();
  }
  EXPECT_EQ(context(1, {5, 4, 3, 0, -1}).destinations(), (std::vector{unmapped, none}));
}

TEST(PNDestinationModuleMapping, MapsDestinationsToModules) {
  const PNDestinationModuleMapping mapping;
  EXPECT_EQ(mapping.getModules({}), std::nullopt);
  EXPECT_EQ(mapping.getModules({none, unmapped}), std::vector<ExtensionModuleName>());
  EXPECT_EQ(mapping.getModules({appMessaging, engagement, unmapped, appMessaging}),
            (std::vector{mobileAppMessaging, quorixEngagement}));
  for (const auto module : rawValues(QXPlatform::RawValuesOf<ExtensionModuleName>())) {
    EXPECT_EQ(mapping.getModule(mapping.getDestination(module)), module);
  }
}

TEST(ContextModuleChecker, LetsTheNamedModulesProceedAndLogsWhatTheContextSaid) {
  const std::string in = "debug Module: PN destination contains module: ";
  const std::string notIn = "error Module: PN destination doesn't contain module: ";
  const std::string engagement = "quorixEngagement";
  const std::string messaging = "mobileAppMessaging";
  using Lines = std::vector<std::string>;
  struct Case {
    PNContextInfo context;
    bool engagementProceeds;
    bool messagingProceeds;
    Lines lines;
  };
  const ContextModuleChecker checker(QXExtensionSDK::Logger::content());
  const auto level = QXExtensionSDK::Logger::globalLoglevel();
  QXExtensionSDK::Logger::setGlobalLoglevel(0);
  for (const auto& [info, engagementProceeds, messagingProceeds, lines] :
       {Case{kDefault, true, false, {notIn + messaging}},
        Case{parse("0:2:"), false, true, {notIn + engagement, in + messaging}},
        Case{parse("1:0:"), false, false, {notIn + engagement, notIn + messaging}},
        Case{parse("0:7:"), true, true, {in + engagement, in + messaging}},
        Case{context(0, {3}), false, false, {notIn + engagement, notIn + messaging}}}) {
    const support::ScopedLogRecorder log;
    EXPECT_EQ(checker.shouldProceed(quorixEngagement, info), engagementProceeds) << info.description();
    EXPECT_EQ(checker.shouldProceed(mobileAppMessaging, info), messagingProceeds) << info.description();
    EXPECT_EQ(log->lines(), lines);
    for (const auto& entry : log->entries()) EXPECT_EQ(entry.subsystem, "ContentExtension");
  }
  QXExtensionSDK::Logger::setGlobalLoglevel(level);
}

}  // namespace
}  // namespace AppGroupSDK
