#include "agent/spool/Spool.h"

#include <fstream>

#include "agent/spool/Recovery.h"
#include "tests/support/ChildProcess.h"

namespace QXAgent {
namespace {

using Reception = Spool::Reception;

class SpoolTest : public testing::Test {
 protected:
  SpoolTest() { reopen(); }

  void reopen() {
    spool_.reset();
    database_ = std::make_unique<Database>(directory_.path(kDatabaseName));
    spool_ = std::make_unique<Spool>(*database_);
  }

  const support::TemporaryDirectory directory_;
  std::unique_ptr<Database> database_;
  std::unique_ptr<Spool> spool_;
};

TEST_F(SpoolTest, WhatWaitsIsThereAfterARestartInTheOrderOfItsArrival) {
  EXPECT_EQ(spool_->take("k1", "a", "first"), Reception::taken);
  EXPECT_EQ(spool_->take("k1", "a", "first"), Reception::repeated);
  EXPECT_EQ(spool_->take("", "a", "second"), Reception::taken);
  spool_->recordAnswer(1, R"({"title":"changed"})");
  spool_->recordDeath(2);
  reopen();
  EXPECT_EQ(spool_->take("k1", "a", "first"), Reception::repeated);
  const auto waiting = spool_->waitingAfter(0, 10);
  ASSERT_EQ(waiting.size(), 2U);
  EXPECT_EQ(waiting[0].text, "first");
  EXPECT_EQ(waiting[0].answer, R"({"title":"changed"})");
  EXPECT_EQ(waiting[1].text, "second");
  EXPECT_EQ(waiting[1].deaths, 1);
  EXPECT_EQ(spool_->waitingAfter(1, 10).size(), 1U);
  EXPECT_EQ(spool_->waitingAfter(0, 1).size(), 1U);
}

TEST_F(SpoolTest, WhatIsShownIsFoundUntilItIsForgottenOrReplaced) {
  spool_->take("", "a", "one");
  spool_->take("", "a", "two");
  spool_->recordShown(1, {"a", "server", 7, "{}", {"/x/1", "/x/2"}});
  reopen();
  EXPECT_FALSE(spool_->shown("another server", 7));
  const auto shown = spool_->shown("server", 7);
  ASSERT_TRUE(shown);
  const std::vector<std::filesystem::path> files{"/x/1", "/x/2"};
  EXPECT_EQ(shown->files, files);
  EXPECT_TRUE(spool_->isInUse(1, "/x/2") && spool_->isInUse(2, "/x/3") && !spool_->isInUse(1, "/x/3"));
  EXPECT_EQ(spool_->recordShown(2, {"a", "server", 8, "{}", {}}), files);
  EXPECT_FALSE(spool_->shown("server", 7));
  EXPECT_EQ(spool_->allShown().size(), 1U);
  spool_->forgetShown("a");
  EXPECT_FALSE(spool_->hasShown());
}

TEST_F(SpoolTest, TheAccountCountsWhatBecameOfAllAndNothingGrowsWithoutBound) {
  for (int i = 0; i < 150; ++i) spool_->putAside("", "nonsense", "no push: " + std::to_string(i));
  spool_->take("", "a", "one");
  spool_->take("", "b", "two");
  spool_->recordShown(1, {"a", "server", 1, "{}", {}});
  spool_->countRefusal("stranger");
  const Account account = spool_->account();
  EXPECT_EQ(account.received, 2);
  EXPECT_EQ(account.shown, 1);
  EXPECT_EQ(account.waiting, 1);
  EXPECT_EQ(account.refused, 1);
  EXPECT_EQ(account.putAside, 150);
  EXPECT_EQ(account.lastError, "stranger");
  Statement kept(*database_, "SELECT count(*) FROM aside");
  ASSERT_TRUE(kept.step());
  EXPECT_EQ(kept.integer(0), 100);
  for (int i = 0; i < 3; ++i) spool_->putAside("", std::string(4 << 20, 'x'), "large");
  Statement held(*database_, "SELECT count(*) FROM aside");
  ASSERT_TRUE(held.step());
  EXPECT_EQ(held.integer(0), 2);

  std::size_t files = 0;
  for (std::uint32_t i = 0; i < 600; ++i)
    files += spool_->recordShown(2, {std::to_string(i), "server", i, "{}", {"/x"}}).size();
  EXPECT_EQ(spool_->allShown().size(), 500U);
  EXPECT_EQ(files, 100U) << "files of what is forgotten";
}

TEST_F(SpoolTest, WhatWasTakenSurvivesAKill) {
  const support::Signal taken;
  support::ChildProcess child([&] {
    const Database database(directory_.path(kDatabaseName));
    Spool spool(database);
    for (int i = 0; i < 50; ++i) spool.take(std::to_string(i), "a", "push");
    taken.send();
    pause();
  });
  ASSERT_TRUE(taken.await());
  child.kill();
  EXPECT_EQ(spool_->waitingAfter(0, 100).size(), 50U);
}

TEST_F(SpoolTest, AFullDiskIsAnAnswerAndChangesNothing) {
  spool_->take("", "a", "push");
  database_->execute("PRAGMA max_page_count = 1");
  EXPECT_EQ(spool_->take("key", "b", std::string(1'000'000, 'x')), Reception::failed);
  EXPECT_EQ(spool_->account().received, 1);
  database_->execute("PRAGMA max_page_count = 100000");
  EXPECT_EQ(spool_->take("key", "b", "x"), Reception::taken);
}

TEST_F(SpoolTest, ADamagedFileIsSetAsideAndBegunAnew) {
  const auto file = directory_.path(kDatabaseName);
  for (int i = 0; i < 100; ++i) spool_->take("", "a", std::string(10'000, 'x'));
  constexpr std::streamoff kWhole = -1;
  constexpr std::streamoff kCut = -2;
  for (const std::streamoff damaged : {kWhole, std::streamoff{0}, std::streamoff{8'192}, kCut}) {
    const bool isDamaged = damaged != kWhole;
    spool_.reset();
    database_.reset();
    if (damaged >= 0) {
      std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
      stream.seekp(damaged) << std::string(65'536, '\xA5');
    }
    if (damaged == kCut) std::filesystem::resize_file(file, 0);
    auto [database, wasDamaged] = openOrBeginAnew(file);
    EXPECT_EQ(wasDamaged, isDamaged) << damaged;
    EXPECT_EQ(std::filesystem::exists(file + ".damaged"), isDamaged) << damaged;
    Spool spool(database);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(spool.take("", "a", std::string(10'000, 'x')), Reception::taken);
    EXPECT_EQ(spool.account().waiting, isDamaged ? 100 : 200) << damaged;
  }
}

}  // namespace
}  // namespace QXAgent
