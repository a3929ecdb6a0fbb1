#include "QXPlatform/files/FileCoordinator.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "QXPlatform/files/FileContents.h"
#include "QXPlatform/files/FileDescriptor.h"
#include "QXTestSupport/ManualClock.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

using namespace std::chrono_literals;
using Outcome = FileCoordinator::Outcome;

class FileCoordinatorTest : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return directory_.path(name); }
  URL url(const std::string& name) const { return URL::file(path(name)); }

  Outcome replace(const std::string& name, const std::string& bytes) const {
    return coordinator_.coordinateWritingForReplacing(
        url(name), [&](const auto& file, const auto&) { return writeContents(bytes, file); });
  }
  std::string read(const std::string& name) const {
    std::string text = "(not read)";
    coordinator_.coordinateReading(url(name), [&](const URL& file) {
      const auto bytes = readContents(file);
      text = bytes ? std::string(bytes->view()) : "(nothing)";
    });
    return text;
  }
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
      names.push_back(entry.path().filename());
    }
    return names;
  }

  support::TemporaryDirectory directory_;
  FileCoordinator coordinator_;
};

TEST_F(FileCoordinatorTest, ReplacesAFileThatIsTheOwnersAlone) {
  const auto mask = ::umask(0777);
  EXPECT_EQ(replace("record", "first, the longer one"), Outcome::replaced);
  ::umask(mask);
  EXPECT_EQ(replace("record", "second"), Outcome::replaced);
  EXPECT_EQ(read("record"), "second");
  EXPECT_EQ(std::filesystem::status(path("record")).permissions(), std::filesystem::perms(0600));
  EXPECT_EQ(names(), std::vector<std::string>{"record"});
}

TEST_F(FileCoordinatorTest, GivesEachContentALaterTimeHoweverSoonItFollows) {
  // As by a clock that has not ticked since the content before.
  const auto writeAtTheSameTime = [](const FileDescriptor& file, const FileVersion& found) {
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    const timespec same{found.modified / kNanoseconds, found.modified % kNanoseconds};
    const timespec times[] = {same, same};
    return writeContents("x", file) && ::futimens(file.get(), times) == 0;
  };
  FileVersion before;
  for (int round = 0; round < 3; ++round) {
    FileVersion version;
    coordinator_.coordinateWritingForReplacing(url("record"), writeAtTheSameTime, &version);
    EXPECT_GT(version.modified, before.modified);
    before = version;
  }
}

TEST_F(FileCoordinatorTest, LeavesTheOldContentWhenTheAccessorFails) {
  ASSERT_EQ(replace("record", "old"), Outcome::replaced);
  const auto halfWritten = [](const FileDescriptor& file) { return writeContents("ne", file); };
  EXPECT_EQ(coordinator_.coordinateWritingForReplacing(url("record"),
                                                       [&](const auto& file, const auto&) {
                                                         halfWritten(file);
                                                         return false;
                                                       }),
            Outcome::failed);
  EXPECT_THROW(coordinator_.coordinateWritingForReplacing(url("record"),
                                                          [&](const auto& file, const auto&) -> bool {
                                                            halfWritten(file);
                                                            throw std::runtime_error("accessor");
                                                          }),
               std::runtime_error);
  EXPECT_EQ(read("record"), "old");
  EXPECT_EQ(names(), std::vector<std::string>{"record"});
}

TEST_F(FileCoordinatorTest, DoesNotFollowSymbolicLinks) {
  directory_.write("elsewhere", "foreign");
  std::filesystem::create_symlink("elsewhere", path("record"));
  EXPECT_EQ(replace("record", "new"), Outcome::failed);
  EXPECT_EQ(read("record"), "(nothing)");
  EXPECT_TRUE(std::filesystem::is_symlink(path("record")));
  EXPECT_EQ(read("elsewhere"), "foreign");
}

TEST_F(FileCoordinatorTest, RemovesWhatAKilledWriterLeft) {
  support::Signal staged;
  support::ChildProcess writer([&] {
    coordinator_.coordinateWritingForReplacing(url("record"), [&](const auto& file, const auto&) {
      writeContents("half", file);
      staged.send();
      std::this_thread::sleep_for(30000ms);
      return true;
    });
  });
  ASSERT_TRUE(staged.await());
  writer.kill();
  ASSERT_EQ(names().size(), 1U);
  const std::string leftover = names().front();

  EXPECT_EQ(replace("record", "whole"), Outcome::replaced);
  EXPECT_EQ(names(), std::vector<std::string>{"record"});

  // A link in its place is removed, not followed.
  std::filesystem::create_symlink("record", path(leftover));
  EXPECT_EQ(replace("other", "x"), Outcome::replaced);
  EXPECT_EQ(read("record"), "whole");
  EXPECT_EQ(names().size(), 2U);
}

TEST_F(FileCoordinatorTest, ADirectoryInTheWayOfTheStagingFileGoes) {
  const support::TemporaryDirectory elsewhere;
  elsewhere.write("kept", "x");
  std::filesystem::create_directories(path(".coordinated-write/inside"));
  directory_.write(".coordinated-write/inside/file", "x");
  std::filesystem::create_symlink(elsewhere.path(), path(".coordinated-write/link"));
  EXPECT_EQ(replace("record", "new"), Outcome::replaced);
  EXPECT_EQ(names(), std::vector<std::string>{"record"});
  EXPECT_TRUE(std::filesystem::exists(elsewhere.path("kept")));
}

TEST_F(FileCoordinatorTest, FailsWhereNothingCanBeWritten) {
  std::filesystem::create_directory(path("directory"));
  EXPECT_EQ(replace("directory", "x"), Outcome::failed);
  EXPECT_EQ(replace("missing/record", "x"), Outcome::failed);
  EXPECT_EQ(replace(std::string(300, 'x'), "x"), Outcome::failed);
  EXPECT_EQ(replace(std::string("record\0", 7), "x"), Outcome::failed);
  EXPECT_EQ(replace("..", "x"), Outcome::failed);
  for (const auto* other : {"https://example.com/record", "file:record"}) {
    EXPECT_EQ(coordinator_.coordinateWritingForReplacing(*URL::parse(other),
                                                         [](const auto&, const auto&) { return true; }),
              Outcome::failed);
  }
  EXPECT_EQ(names(), std::vector<std::string>{"directory"});
}

TEST_F(FileCoordinatorTest, HoldsWritersOffWhileAProcessReads) {
  ASSERT_EQ(replace("record", "old"), Outcome::replaced);
  support::Signal reading;
  support::Signal enough;
  support::ChildProcess reader([&] {
    coordinator_.coordinateReading(url("record"), [&](const URL& file) {
      reading.send();
      EXPECT_TRUE(enough.await());
      EXPECT_EQ(readContents(file)->view(), "old");
    });
  });
  ASSERT_TRUE(reading.await());
  EXPECT_EQ(read("record"), "old") << "readers share";

  support::ChildProcess writer([&] { EXPECT_EQ(replace("record", "new"), Outcome::replaced); });
  std::this_thread::sleep_for(50ms);
  EXPECT_TRUE(writer.running());
  enough.send();
  EXPECT_TRUE(reader.succeeds());
  EXPECT_TRUE(writer.succeeds());
  EXPECT_EQ(read("record"), "new");
}

TEST_F(FileCoordinatorTest, HoldsWritersOffWhileAThreadWritesButNoReaders) {
  ASSERT_EQ(replace("record", "old"), Outcome::replaced);
  std::atomic<bool> written = false;
  support::Signal writing;
  support::Signal enough;
  std::thread writer([&] {
    EXPECT_EQ(coordinator_.coordinateWritingForReplacing(url("record"),
                                                         [&](const auto& file, const auto&) {
                                                           writing.send();
                                                           EXPECT_TRUE(enough.await());
                                                           written = true;
                                                           return writeContents("new", file);
                                                         }),
              Outcome::replaced);
  });
  EXPECT_TRUE(writing.await());
  EXPECT_EQ(read("record"), "old");
  std::thread otherWriter([&] {
    EXPECT_EQ(replace("other", "x"), Outcome::replaced);
    EXPECT_TRUE(written);
  });
  std::this_thread::sleep_for(50ms);
  enough.send();
  writer.join();
  otherWriter.join();
  EXPECT_EQ(read("record"), "new");
}

TEST_F(FileCoordinatorTest, LetsAWriterInAmongReadersAndWritersThatNeverStop) {
  ASSERT_EQ(replace("record", "old"), Outcome::replaced);
  std::vector<std::unique_ptr<support::ChildProcess>> others;
  for (int number = 0; number < 8; ++number) {
    others.push_back(std::make_unique<support::ChildProcess>([&] {
      while (true) number < 7 ? void(read("record")) : void(replace("other", "x"));
    }));
  }
  const auto start = std::chrono::steady_clock::now();
  for (int round = 0; round < 20; ++round) EXPECT_EQ(replace("record", "new"), Outcome::replaced);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

TEST_F(FileCoordinatorTest, WaitsFiveSecondsForALockThatIsHeldForEverAndNamesItsHolder) {
  ASSERT_EQ(replace("record", "old"), Outcome::replaced);
  for (const bool reads : {true, false}) {
    support::Signal holding;
    support::ChildProcess holder([&] {
      const auto hold = [&] {
        holding.send();
        std::this_thread::sleep_for(60s);
        return false;
      };
      if (reads) coordinator_.coordinateReading(url("record"), [&](const URL&) { hold(); });
      coordinator_.coordinateWritingForReplacing(url("record"), [&](auto&, auto&) { return hold(); });
    });
    ASSERT_TRUE(holding.await());
    const support::ScopedLogRecorder log;
    QXTestSupport::ManualClock clock;
    std::atomic<bool> ended = false;
    std::thread writer([&] {
      EXPECT_EQ(replace("record", "new"), Outcome::failed);
      EXPECT_EQ(read("record"), "old") << "another lock, which is granted";
      EXPECT_EQ(replace("record", "new"), Outcome::failed) << "without waiting again";
      ended = true;
    });
    // The first second may pass before the writer has come to the lock.
    const auto seconds = clock.secondsUntil([&] { return ended.load(); }, 5);
    EXPECT_TRUE(seconds == 5 || seconds == 6) << seconds.value_or(0);
    writer.join();
    EXPECT_EQ(log->entries().size(), 1U);
    EXPECT_TRUE(log->mentions("by process " + std::to_string(holder.id()) + " ("));
    EXPECT_EQ(read("record"), "old");
    holder.kill();
    EXPECT_EQ(replace("record", "old"), Outcome::replaced);
  }
}

TEST_F(FileCoordinatorTest, HasPatienceLeftForTheReplacingAfterASlowAccessor) {
  ASSERT_EQ(replace("record", "old"), Outcome::replaced);
  QXTestSupport::ManualClock clock;
  support::Signal reading;
  support::Signal enough;
  std::thread reader([&] {
    coordinator_.coordinateReading(url("record"), [&](const URL&) {
      reading.send();
      EXPECT_TRUE(enough.await());
      std::this_thread::sleep_for(50ms);
    });
  });
  EXPECT_TRUE(reading.await());
  EXPECT_EQ(coordinator_.coordinateWritingForReplacing(url("record"),
                                                       [&](const auto& file, const auto&) {
                                                         clock.advance(6s);
                                                         enough.send();
                                                         return writeContents("new", file);
                                                       }),
            Outcome::replaced);
  reader.join();
}

// In a child process as another user, where there is another to be.
class Stranger : public support::ChildProcess {
 public:
  explicit Stranger(const std::function<void()>& body)
      : ChildProcess([&body] {
          constexpr uid_t kNobody = 65534;
          ASSERT_TRUE(::geteuid() != 0 || ::seteuid(kNobody) == 0);
          body();
        }) {}
};

TEST_F(FileCoordinatorTest, LeavesAFileAloneThatThisUserMayNotWrite) {
  std::filesystem::permissions(directory_.path(), std::filesystem::perms::all);
  Stranger stranger([&] {
    directory_.write("record", "old");
    ::chmod(path("record").c_str(), 0400);
    EXPECT_EQ(replace("record", "new"), Outcome::failed);
    EXPECT_EQ(read("record"), "old");
  });
  EXPECT_TRUE(stranger.succeeds());
}

TEST_F(FileCoordinatorTest, LeavesTheStagingFileOfAnotherUsersWriterThatLives) {
  std::filesystem::permissions(directory_.path(), std::filesystem::perms::all);
  const auto whileStaged = [&](const auto& file, const auto&) {
    Stranger stranger([&] { read("record"); });
    return stranger.succeeds() && writeContents("new", file);
  };
  EXPECT_EQ(coordinator_.coordinateWritingForReplacing(url("record"), whileStaged), Outcome::replaced);
}

TEST_F(FileCoordinatorTest, LeavesTheStagingFileOfAWriterThatLivesForWantOfDescriptors) {
#ifdef QX_SANITIZED
  GTEST_SKIP() << "the sanitizer needs descriptors of its own to look at an object's type";
#endif
  const auto whileStaged = [&](const auto& file, const auto&) {
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const auto next = static_cast<rlim_t>(FileDescriptor(::open("/", O_RDONLY | O_CLOEXEC)).get());
    const rlimit forTheDirectory{next + 1, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &forTheDirectory);
    coordinator_.coordinateReading(url("record"), [](const URL&) {});
    setrlimit(RLIMIT_NOFILE, &usual);
    return writeContents("new", file);
  };
  EXPECT_EQ(coordinator_.coordinateWritingForReplacing(url("record"), whileStaged), Outcome::replaced);
}

TEST_F(FileCoordinatorTest, RemovesTheStagingFileThatAnotherUsersWriterLeftBehind) {
  std::filesystem::permissions(directory_.path(), std::filesystem::perms::all);
  const std::string left = path(".coordinated-write");
  directory_.write(".coordinated-write", "half");
  ::chmod(left.c_str(), 0600);
  std::filesystem::last_write_time(left, std::filesystem::file_time_type::clock::now() - 2min);
  Stranger stranger([&] { EXPECT_EQ(replace("record", "new"), Outcome::replaced); });
  EXPECT_TRUE(stranger.succeeds());
}

}  // namespace
}  // namespace QXPlatform
