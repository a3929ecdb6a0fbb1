#include "QXExtensionSDK/content/DefaultCoordinatorFactory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QXExtensionSDK/runtime/Logger.h"
#include "tests/QXExtensionSDK/content/FakeCarouselScreen.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/RecordingLogSink.h"

namespace QXExtensionSDK {
namespace {

using testing::ElementsAre;

TEST(DefaultCoordinatorFactoryTest, KnowsTheCarouselAndNothingElse) {
  Logger::setGlobalLoglevel(0);
  std::shared_ptr<FakeCarouselScreen> screen;
  const DefaultCoordinatorFactory factory([&] { return screen = std::make_shared<FakeCarouselScreen>(); },
                                          [](const std::function<void()>& work) { work(); });
  {
    support::ScopedLogRecorder log;
    const auto request =
        support::makeRequest({{"_rf", support::dictionary(support::carousel(support::plainPanels(2)))}});
    const auto coordinator = factory.createCoordinatorUsing(*request);
    ASSERT_NE(coordinator, nullptr);
    EXPECT_THAT(log->messages(), ElementsAre("ViewTemplate type is carousel"));
    EXPECT_EQ(coordinator->primaryViewController(), nullptr);
    coordinator->startWith(request);
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(screen->applied.panels->size(), 2U);
  }
  support::ScopedLogRecorder log;
  EXPECT_EQ(factory.createCoordinatorUsing(
                *support::makeRequest(support::dictionary(R"({"_rf":{"vt":{"t":"1"}}})"))),
            nullptr);
  EXPECT_THAT(log->messages(), ElementsAre("Invalid view template raw value", "Invalid View Template Type"));
}

}  // namespace
}  // namespace QXExtensionSDK
