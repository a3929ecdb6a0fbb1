// The receipt list and the repository over real files.

#include "QXExtensionSDK/receipts/DeliveryReceiptRepository.h"
#include "QXTestSupport/ManualClock.h"
#include "tests/QXExtensionSDK/receipts/ReceiptTestKit.h"
#include "tests/support/FileCalls.h"
#include "tests/support/FullDisk.h"

namespace QXExtensionSDK {
namespace {

using AppGroupSDK::DataStoreStatus;

constexpr auto kFile = "com.veltro.qx.extensionsdk.deliveryReceipt.quorixEngagement.qxe-app.data";

class ReceiptStorageTest : public testing::Test {
 protected:
  ReceiptStorageTest() { Logger::setGlobalLoglevel(0); }

  static std::shared_ptr<ReceiptRun> makeRun() { return std::make_shared<ReceiptRun>(kQXE, appIdOf(kQXE)); }
  static std::unique_ptr<DeliveryReceiptsPNStore> makeStore(std::shared_ptr<ReceiptRun> run = makeRun()) {
    return std::make_unique<DeliveryReceiptsPNStore>(
        std::make_unique<const AppGroupSDK::DeliveryReceiptsModelStore>(kQXE, appIdOf(kQXE)), std::move(run));
  }
  static DeliveryReceiptRepositoryManager makeRepository() {
    const auto run = makeRun();
    return {makeStore(run), run};
  }
  static Receipts onDisk() { return ReceiptHost::stored(kQXE); }
  static void put(Receipts list) { ReceiptHost::put(kQXE, std::move(list)); }

  const ReceiptHost host_{"https://example.com"};
  support::ScopedLogRecorder log_;
};

TEST_F(ReceiptStorageTest, TheThreeHundredAndFirstPushesTheOldestOutOfTheFileOnly) {
  for (const int length : {300, 360}) {
    put(receipts(1, length));
    const auto store = makeStore();
    EXPECT_EQ(messageIds(*makeStore()->fetchAllReceipts()), messageIds(receipts(length - 299, length)));
    EXPECT_EQ(store->storeReceipts(receipts(length + 1, length + 1), maxStoredReceipts),
              DataStoreStatus::success);
    EXPECT_EQ(messageIds(onDisk()), messageIds(receipts(length - 298, length + 1)));
    EXPECT_EQ(store->fetchAllReceipts()->size(), 301U);
    EXPECT_TRUE(log_->has("All receipts count before storing any new receipt is 300"));
  }
}

TEST_F(ReceiptStorageTest, WhatASendChangesIsTheWholeListInMemory) {
  for (const bool succeeded : {false, true}) {
    put(receipts(1, 300));
    auto repository = makeRepository();
    ASSERT_EQ(repository.storeReceipt("m", std::nullopt, "t", std::nullopt), DataStoreStatus::success);
    const auto batch = repository.fetchPendingReceipts();
    ASSERT_EQ(batch->size(), maxReceiptsPerRequest);
    EXPECT_EQ(batch->back().messageId(), "m");
    bool completed = false;
    repository.handleSendResult(succeeded, *batch, [&](bool result) { completed = result == succeeded; });
    EXPECT_TRUE(completed);
    EXPECT_EQ(onDisk().size(), succeeded ? 151U : 301U);
  }
}

TEST_F(ReceiptStorageTest, ABatchHoldsTheLastOfFailedThenPending) {
  Receipts mixed;
  for (int number = 1; number <= 200; ++number) {
    mixed.push_back(receipt(number, number % 2 == 0 ? PNStatus::failed : PNStatus::pending));
  }
  put(mixed);
  const auto batch = makeRepository().fetchPendingReceipts();
  ASSERT_EQ(batch->size(), 150U);
  EXPECT_EQ(batch->front().messageId(), "message-102");  // the 51st failed one
  EXPECT_EQ((*batch)[49].messageId(), "message-200");
  EXPECT_EQ((*batch)[50].messageId(), "message-1");
  EXPECT_EQ(batch->back().messageId(), "message-199");
}

TEST_F(ReceiptStorageTest, StoringNothingEmptiesTheFileAndKeepsTheMemory) {
  put(receipts(1, 3));
  const auto store = makeStore();
  EXPECT_EQ(store->storeReceipts({}, maxStoredReceipts), DataStoreStatus::success);
  EXPECT_TRUE(onDisk().empty());
  EXPECT_EQ(store->fetchAllReceipts()->size(), 3U);
}

TEST_F(ReceiptStorageTest, WithNothingStoredTheOtherCallsSaySoAndWriteNothing) {
  const auto store = makeStore();
  EXPECT_EQ(store->fetchAllReceipts(), std::nullopt);
  EXPECT_EQ(store->fetchReceipts(PNStatus::failed), std::nullopt);
  EXPECT_EQ(store->updateStatus(receipts(1, 1), PNStatus::failed), std::nullopt);
  store->removeReceipts(receipts(1, 1));
  for (const bool succeeded : {false, true}) makeRepository().handleSendResult(succeeded, {}, [](bool) {});
  const std::string none = "debug DeliveryReceipt: No DeliveryReceipts ";
  EXPECT_EQ(log_->lines(),
            (std::vector<std::string>{
                none + "in store", none + "in store", none + "in store", none + "to update status: 1",
                none + "in store", none + "to remove", none + "in store", none + "to update status: 1",
                "debug DeliveryReceipt: DeliveryReceipts [] marked failed with result: noData",
                none + "in store", none + "to remove", "debug DeliveryReceipt: DeliveryReceipts [] sent"}));
  EXPECT_EQ(host_.bundle().files().size(), 3U);  // the host's own records
}

TEST_F(ReceiptStorageTest, StatusAndRemovalGoByUuidAndKeepTheOrder) {
  put(receipts(1, 4));
  const auto store = makeStore();
  EXPECT_EQ(store->updateStatus({receipt(3), receipt(9)}, PNStatus::failed), DataStoreStatus::success);
  EXPECT_EQ(messageIds(*store->fetchReceipts(PNStatus::failed)), std::vector<std::string>{"message-3"});
  store->removeReceipts({receipt(2), receipt(9)});
  EXPECT_EQ(messageIds(onDisk()), (std::vector<std::string>{"message-1", "message-3", "message-4"}));
  EXPECT_EQ(onDisk()[1].status(), PNStatus::failed);
  EXPECT_DEATH(store->removeReceipts({receipt(1), receipt(1)}), "Duplicate values for key: 'uuid-1'");
}

TEST_F(ReceiptStorageTest, AFileWithAReceiptTwiceDoesNotStopTheProcess) {
  put({receipt(1), receipt(1), receipt(2)});
  auto repository = makeRepository();
  const auto batch = repository.fetchPendingReceipts();
  ASSERT_EQ(batch->size(), 2U);
  repository.handleSendResult(true, *batch, [](bool) {});
  EXPECT_TRUE(onDisk().empty());
}

TEST_F(ReceiptStorageTest, AReceiptCarriesThePushsIdentity) {
  auto repository = makeRepository();
  const double before = QXPlatform::Date::now().secondsSince1970;
  repository.storeReceipt("m", "r", "t", QXPlatform::Dictionary{{"k", 1}});
  repository.storeReceipt("m", std::nullopt, "t", std::nullopt);
  const auto stored = onDisk();
  ASSERT_EQ(stored.size(), 2U);
  EXPECT_EQ(stored[0].uuid().size(), 36U);
  EXPECT_NE(stored[0].uuid(), stored[1].uuid());
  EXPECT_EQ(stored[0].requestId(), "r");
  EXPECT_EQ(stored[0].propertyBag(), "{\n  \"k\" : 1\n}");
  EXPECT_EQ(QXPlatform::parseJSON(*stored[1].propertyBag())->dictionary(), QXPlatform::Dictionary());
  EXPECT_EQ(stored[0].status(), PNStatus::pending);
  EXPECT_GE(stored[0].eventDateUtc(), before);
}

TEST_F(ReceiptStorageTest, AFileThatHoldsSomethingElseIsKeptBesideTheNewOne) {
  const std::string kept = std::string(kFile) + ".damaged";
  for (const std::string damaged : {"", R"({"pnData":[{"uuid":"u"}]})", "{"}) {
    host_.bundle().write(kFile, damaged);
    auto repository = makeRepository();
    EXPECT_EQ(repository.fetchPendingReceipts(), std::nullopt);
    EXPECT_EQ(repository.storeReceipt("m", std::nullopt, "t", std::nullopt), DataStoreStatus::success);
    EXPECT_EQ(onDisk().size(), 1U);
    EXPECT_EQ(host_.bundle().read(kept), damaged);
    EXPECT_EQ(log_->has("DeliveryReceipts that cannot be read are kept in " + kept), !damaged.empty());
  }
}

TEST_F(ReceiptStorageTest, AFullDiskLeavesTheFileAsItWasAndNothingBesideIt) {
  for (const std::string before : {"{", R"({"pnData":[]})"}) {
    host_.bundle().write(kFile, before);
    const auto files = host_.bundle().files();
    const support::FullDisk full(0);
    EXPECT_EQ(makeRepository().storeReceipt("m", std::nullopt, "t", std::nullopt),
              DataStoreStatus::writeFailed);
    EXPECT_EQ(host_.bundle().read(kFile), before);
    EXPECT_THAT(host_.bundle().files(), testing::UnorderedElementsAreArray(files));
  }
}

TEST_F(ReceiptStorageTest, AFileThatCannotBeReadIsNotWrittenOver) {
  host_.bundle().write(kFile, "");
  std::filesystem::resize_file(host_.bundle().file(kFile), QXPlatform::kMaxFileContents + 1);
  auto repository = makeRepository();
  EXPECT_EQ(repository.storeReceipt("m", std::nullopt, "t", std::nullopt), DataStoreStatus::writeFailed);
  const auto batch = repository.fetchPendingReceipts();
  ASSERT_TRUE(batch) << "it is sent all the same";
  repository.handleSendResult(false, *batch, [](bool) {});
  EXPECT_EQ(std::filesystem::file_size(host_.bundle().file(kFile)), QXPlatform::kMaxFileContents + 1);
}

TEST_F(ReceiptStorageTest, ASaveThatNobodyElseCameBeforeReadsNothingAgain) {
  if (!support::FileCalls::areCounted()) GTEST_SKIP() << "A sanitizer has the calls of its own";
  put(receipts(1, 300));
  const auto store = makeStore();
  store->storeReceipts(receipts(301, 301), maxStoredReceipts);
  const support::FileCalls calls;
  EXPECT_EQ(store->updateStatus(receipts(301, 301), PNStatus::failed), DataStoreStatus::success);
  EXPECT_EQ(calls.flushes(), 1U);
  EXPECT_EQ(calls.reads(), 0U);
}

TEST_F(ReceiptStorageTest, RunsOfOneProcessNeitherOverwriteNorRepeatEachOther) {
  auto first = makeRepository();
  auto second = makeRepository();
  first.storeReceipt("a", std::nullopt, "t", std::nullopt);
  const auto ofFirst = first.fetchPendingReceipts();
  second.storeReceipt("b", std::nullopt, "t", std::nullopt);
  const auto ofSecond = second.fetchPendingReceipts();
  EXPECT_EQ(messageIds(*ofFirst), std::vector<std::string>{"a"});
  EXPECT_EQ(messageIds(*ofSecond), std::vector<std::string>{"b"});
  first.handleSendResult(true, *ofFirst, [](bool) {});
  EXPECT_EQ(messageIds(onDisk()), std::vector<std::string>{"b"});
  second.handleSendResult(false, *ofSecond, [](bool) {});
  ASSERT_EQ(messageIds(onDisk()), std::vector<std::string>{"b"});
  EXPECT_EQ(onDisk()[0].status(), PNStatus::failed);
  // What was given back, and what a run that is gone had taken, is offered again.
  { EXPECT_TRUE(makeRepository().fetchPendingReceipts()); }
  EXPECT_TRUE(first.fetchPendingReceipts());
}

DeliveryReceiptPNModel largeReceipt(int number, std::size_t size) {
  auto large = receipt(number);
  large.setPropertyBag(std::string(size, 'x'));
  return large;
}

TEST_F(ReceiptStorageTest, TheListNeverOutgrowsWhatCanBeReadAgain) {
  for (int number = 1; number <= 100; ++number) {
    EXPECT_EQ(makeStore()->storeReceipts({largeReceipt(number, 60'000)}, maxStoredReceipts),
              DataStoreStatus::success);
  }
  EXPECT_EQ(messageIds(onDisk()), messageIds(receipts(67, 100)));
  EXPECT_THAT(log_->lines(),
              testing::Contains("error DeliveryReceipt: DeliveryReceipts dropped for want of room: 1"));
  // A status change writes the untrimmed memory.
  const auto store = makeStore();
  store->storeReceipts({largeReceipt(101, 60'000)}, maxStoredReceipts);
  EXPECT_EQ(store->updateStatus(receipts(67, 101), PNStatus::failed), DataStoreStatus::success);
  EXPECT_EQ(messageIds(onDisk()), messageIds(receipts(68, 101)));
}

TEST_F(ReceiptStorageTest, AReceiptBeyondBoundsIsSentButPushesNoOtherOut) {
  // The texts of 4 KB of brackets, set out in lines, swell to hundreds of times that.
  QXPlatform::Value nested(1);
  for (int depth = 0; depth < 500; ++depth) nested = QXPlatform::Value(std::vector{nested});
  put(receipts(1, 3));
  auto repository = makeRepository();
  EXPECT_EQ(repository.storeReceipt("m", std::nullopt, "t", QXPlatform::Dictionary{{"k", nested}}),
            DataStoreStatus::writeFailed);
  EXPECT_EQ(messageIds(onDisk()), messageIds(receipts(1, 3)));
  EXPECT_EQ(repository.fetchPendingReceipts()->back().messageId(), "m");
  EXPECT_EQ(makeStore()->storeReceipts({largeReceipt(4, kMaxReceiptListBytes)}, maxStoredReceipts),
            DataStoreStatus::writeFailed);
  EXPECT_EQ(messageIds(onDisk()), messageIds(receipts(1, 3)));
}

TEST_F(ReceiptStorageTest, ARunThatIsStuckInItsAnswerGivesItsReceiptsBackInTime) {
  QXTestSupport::ManualClock clock;
  put(receipts(1, 2));
  auto stuck = makeRepository();
  auto next = makeRepository();
  ASSERT_TRUE(stuck.fetchPendingReceipts());
  clock.advance(kClaimLifetime - std::chrono::seconds(1));
  EXPECT_EQ(next.fetchPendingReceipts(), std::nullopt);
  clock.advance(std::chrono::seconds(1));
  EXPECT_EQ(next.fetchPendingReceipts()->size(), 2U);
}

TEST_F(ReceiptStorageTest, AReceiptWhoseSaveFailedOutlivesTheSavesOfOtherRuns) {
  // The file cannot be written while its name is a link.
  const auto file = host_.bundle().file(kFile);
  std::filesystem::create_symlink("elsewhere", file);
  auto first = makeRepository();
  ASSERT_EQ(first.storeReceipt("a", std::nullopt, "t", std::nullopt), DataStoreStatus::writeFailed);
  std::filesystem::remove(file);

  auto second = makeRepository();
  ASSERT_EQ(second.storeReceipt("b", std::nullopt, "t", std::nullopt), DataStoreStatus::success);
  const auto ofSecond = second.fetchPendingReceipts();
  EXPECT_EQ(messageIds(*ofSecond), std::vector<std::string>{"b"});
  const auto ofFirst = first.fetchPendingReceipts();
  ASSERT_TRUE(ofFirst);
  EXPECT_EQ(messageIds(*ofFirst), std::vector<std::string>{"a"});
  second.handleSendResult(true, *ofSecond, [](bool) {});
  first.handleSendResult(false, *ofFirst, [](bool) {});
  ASSERT_EQ(messageIds(onDisk()), std::vector<std::string>{"a"});
  EXPECT_EQ(onDisk()[0].status(), PNStatus::failed);
}

TEST_F(ReceiptStorageTest, WhatIsAcknowledgedIsNotSentAgainWhenItsRemovalCouldNotBeSaved) {
  put(receipts(1, 2));
  const auto file = host_.bundle().file(kFile);
  auto first = makeRepository();
  const auto batch = first.fetchPendingReceipts();
  std::filesystem::rename(file, file + ".away");
  std::filesystem::create_symlink("elsewhere", file);
  first.handleSendResult(true, *batch, [](bool) {});
  std::filesystem::rename(file + ".away", file);
  EXPECT_EQ(onDisk().size(), 2U);
  EXPECT_EQ(makeRepository().fetchPendingReceipts(), std::nullopt);
}

TEST_F(ReceiptStorageTest, AcknowledgedReceiptsAreForgottenWhenNoRunCanHaveReadThemBefore) {
  ReceiptIds uuid;
  uuid.add("uuid");
  auto older = makeRun();
  {
    const auto sender = makeRun();
    sender->acknowledge(uuid);
    sender->removed(uuid);
  }
  const auto younger = makeRun();
  EXPECT_FALSE(ReceiptRun::Claims(*younger).add("uuid"));
  older.reset();
  EXPECT_TRUE(ReceiptRun::Claims(*younger).add("uuid"));
}

TEST(ReceiptIds, KeepTheirOrderAndTheirPlacesWhenSomeGo) {
  const auto idOf = [](std::size_t index) { return std::string(index % 40, 'x') + std::to_string(index); };
  ReceiptIds ids(0);
  for (std::size_t index = 0; index < 600; ++index) ASSERT_EQ(ids.add(idOf(index % 300)), index % 300);
  ids.drop([](std::size_t number) { return number % 3 != 1; });
  ASSERT_EQ(ids.count(), 100U);
  for (std::size_t number = 0; number < 100; ++number) ASSERT_EQ(ids[number], idOf(3 * number + 1));
  for (std::size_t index = 0; index < 300; ++index) ASSERT_EQ(ids.contains(idOf(index)), index % 3 == 1);
  ids.drop([](std::size_t) { return true; });
  EXPECT_FALSE(ids.contains(idOf(1)));
  EXPECT_EQ(ids.add(idOf(1)), 0U);
}

TEST_F(ReceiptStorageTest, OneFileIsOneWhateverBlanksSurroundTheApplicationId) {
  ReceiptRun run(kQXE, " " + appIdOf(kQXE) + "\n");
  EXPECT_TRUE(ReceiptRun::Claims(run).add("uuid"));
  EXPECT_FALSE(ReceiptRun::Claims(*makeRun()).add("uuid"));
  ReceiptRun other(kMAM, appIdOf(kQXE));
  EXPECT_TRUE(ReceiptRun::Claims(other).add("uuid"));
}

}  // namespace
}  // namespace QXExtensionSDK
