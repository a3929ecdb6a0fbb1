#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "AppGroupSDK/context/PNContextUtils.h"
#include "AppGroupSDK/records/CarouselRichFeatureMetaUtils.h"
#include "QXExtensionSDK/content/CarouselPresenter.h"
#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/RecordingLogSink.h"

namespace QXExtensionSDK {
namespace {

// The first JSON example of the guide for those who write payloads.
std::string pushOfTheGuide() {
  std::ifstream file(QX_DOCS "/payload.md", std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string fence = "```json\n";
  const std::size_t begin = text.find(fence) + fence.size();
  return text.substr(begin, text.find("```", begin) - begin);
}

TEST(PayloadGuideTest, ShowsAPushThatWorksInEveryPart) {
  support::ScopedLogRecorder log;
  const auto userInfo = support::dictionary(pushOfTheGuide());
  EXPECT_TRUE(VTQXUtility::isVTQXPush(userInfo));
  EXPECT_EQ(AppGroupSDK::CarouselRichFeatureMetaUtils::getUniqueNotificationIdFrom(userInfo),
            "message-17:request-4");
  EXPECT_EQ(AppGroupSDK::PNContextUtils::parseContextInfoFromUserInfo(userInfo).businessUnitId(), "BU-7");

  const auto model = PayloadCarouselModelParser(Logger::content()).parse(*support::makeRequest(userInfo));
  ASSERT_TRUE(model);
  const auto viewModel = CarouselPresenter(Logger::content()).viewModel(*model);
  EXPECT_TRUE(viewModel.hasValidTimer);
  ASSERT_EQ(viewModel.panels->size(), 2U);
  for (const auto& panel : *viewModel.panels) EXPECT_TRUE(panel.action);
  EXPECT_TRUE(log->entries().empty());
}

}  // namespace
}  // namespace QXExtensionSDK
