#include "QXExtensionSDK/runtime/NotificationServiceWorker.h"

#include "tests/QXExtensionSDK/runtime/ScriptedProcessors.h"

namespace QXExtensionSDK {
namespace {

using QXPlatform::Dictionary;
using Content = QXPlatform::UNMutableNotificationContent;

class NotificationServiceWorkerTest : public testing::Test {
 protected:
  std::shared_ptr<NotificationServiceWorker> makeWorker(std::vector<ScriptedProcessor::Script> scripts) {
    return NotificationServiceWorker::make(std::shared_ptr<ClientCalling>(service_, service_.get()),
                                           std::make_unique<const ScriptedProvider>(std::move(scripts)));
  }

  std::shared_ptr<TestService> service_ = std::make_shared<TestService>();
  Deliveries deliveries_;
  support::ScopedLogRecorder log_;
};

TEST_F(NotificationServiceWorkerTest, MergesChangesInTheOrderOfAcceptanceAndTheLastWins) {
  std::promise<void> firstDone;
  const auto worker = makeWorker({
      [&](Content&, const ProcessingCompletion& complete) {
        firstDone.get_future().wait();
        complete(Dictionary{{"key", "started first, accepted last"}});
      },
      [&](Content&, const ProcessingCompletion& complete) {
        complete(Dictionary{{"key", "accepted first"}, {"own", 1}});
        firstDone.set_value();
      },
      [](Content&, const ProcessingCompletion& complete) { complete(std::nullopt); },
      [](Content&, const ProcessingCompletion& complete) { complete(Dictionary()); },
  });
  worker->workerDidReceive(makeRequest({{"key", "payload"}, {"other", "stays"}}), deliveries_.handler());
  ASSERT_TRUE(deliveries_.waitFor(1));
  EXPECT_EQ(deliveries_.at(0).userInfo,
            (Dictionary{{"key", "started first, accepted last"}, {"own", 1}, {"other", "stays"}}));
  EXPECT_EQ(deliveries_.at(0).title, "Title");
}

TEST_F(NotificationServiceWorkerTest, ASecondCompletionIsLoggedAndDisturbsNothing) {
  const auto worker =
      makeWorker({[](Content&, const ProcessingCompletion& complete) {
                    complete(Dictionary{{"a", 1}});
                    complete(Dictionary{{"a", 2}});
                  },
                  [this](Content&, const ProcessingCompletion& complete) {
                    EXPECT_TRUE(log_->waitFor("Multiple completion called for processor=ScriptedProcessor"));
                    complete(std::nullopt);
                  }});
  worker->workerDidReceive(makeRequest({}), deliveries_.handler());
  ASSERT_TRUE(deliveries_.waitFor(1));
  EXPECT_EQ(deliveries_.at(0).userInfo, (Dictionary{{"a", 1}}));
}

TEST_F(NotificationServiceWorkerTest, ExpiryDeliversTheContentAsItStandsAndTheMergeFollows) {
  ProcessingCompletion late;
  std::promise<void> started;
  const auto worker = makeWorker({[&](Content& content, const ProcessingCompletion& complete) {
                                    content.setTitle("changed directly");
                                    late = complete;
                                    started.set_value();
                                  },
                                  [](Content&, const ProcessingCompletion& complete) {
                                    complete(Dictionary{{"collected", 1}});
                                  }});
  worker->workerDidReceive(makeRequest({{"a", 1}}), deliveries_.handler());
  started.get_future().wait();
  worker->workerServiceExtensionTimeWillExpire();
  ASSERT_TRUE(deliveries_.waitFor(1));
  EXPECT_EQ(deliveries_.at(0).title, "changed directly");
  EXPECT_EQ(deliveries_.at(0).userInfo, (Dictionary{{"a", 1}}));
  late(std::nullopt);
  ASSERT_TRUE(deliveries_.waitFor(2));
  EXPECT_EQ(deliveries_.at(1).userInfo, (Dictionary{{"a", 1}, {"collected", 1}}));
  worker->workerServiceExtensionTimeWillExpire();
  ASSERT_TRUE(deliveries_.waitFor(3));
  EXPECT_EQ(deliveries_.at(2).userInfo, deliveries_.at(1).userInfo);
}

TEST_F(NotificationServiceWorkerTest, WhatIsMissingIsLoggedAndNothingIsDelivered) {
  const auto early = makeWorker({});
  early->workerServiceExtensionTimeWillExpire();
  EXPECT_TRUE(log_->waitFor("Content handler block is nil in processServiceExtensionTimeWillExpire"));

  const auto unreadable = makeWorker({});
  unreadable->workerDidReceive(std::make_shared<const QXPlatform::UNNotificationRequest>(),
                               deliveries_.handler());
  EXPECT_TRUE(log_->waitFor("Mutable content is nil in processDidReceive"));
  unreadable->workerServiceExtensionTimeWillExpire();
  EXPECT_TRUE(log_->waitFor("Mutable content is nil in processServiceExtensionTimeWillExpire"));

  makeWorker({})->workerDidReceive(makeRequest({}), nullptr);
  EXPECT_TRUE(log_->waitFor("Content handler block is nil in processDidReceive"));
  EXPECT_EQ(deliveries_.count(), 0U);
}

TEST_F(NotificationServiceWorkerTest, ACompletionThatOutlivesTheWorkerOnlyLogs) {
  ProcessingCompletion late;
  std::promise<void> started;
  auto worker = makeWorker({[&](Content&, const ProcessingCompletion& complete) {
    late = complete;
    started.set_value();
  }});
  const std::weak_ptr<NotificationServiceWorker> watched = worker;
  worker->workerDidReceive(makeRequest({}), deliveries_.handler());
  started.get_future().wait();
  worker.reset();
  // The merge that waits for the group still holds the worker until the completion comes.
  late(Dictionary{{"late", 1}});
  ASSERT_TRUE(deliveries_.waitFor(1));
  ASSERT_TRUE(support::eventually([&] { return watched.expired(); }));
  late(std::nullopt);
  EXPECT_TRUE(log_->waitFor("self reference is nil in processDidReceive"));
}

TEST_F(NotificationServiceWorkerTest, ACompletionThatIsDroppedWithoutACallKeepsNothingAlive) {
  auto worker = makeWorker({[](Content&, const ProcessingCompletion&) {},
                            [](Content&, const ProcessingCompletion& complete) { complete(std::nullopt); }});
  const std::weak_ptr<NotificationServiceWorker> watched = worker;
  worker->workerDidReceive(makeRequest({}), deliveries_.handler());
  worker->workerServiceExtensionTimeWillExpire();
  ASSERT_TRUE(deliveries_.waitFor(1));
  worker.reset();
  EXPECT_TRUE(support::eventually([&] { return watched.expired(); }));
  EXPECT_EQ(deliveries_.count(), 1U);
}

TEST_F(NotificationServiceWorkerTest, ADelegateThatIsGoneIsLogged) {
  const auto worker = makeWorker({});
  service_.reset();
  EXPECT_EQ(worker->clientProvideConfig().logLevel(), LogLevel::none);
  worker->clientDidReceive(makeRequest({}), nullptr, [](const auto&) { ADD_FAILURE() << "completed"; });
  EXPECT_TRUE(log_->has("Client calling delegate is nil in clientProvideConfig"));
  EXPECT_TRUE(log_->has("Client calling delegate is nil in clientDidReceive"));
}

}  // namespace
}  // namespace QXExtensionSDK
