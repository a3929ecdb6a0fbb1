#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "AppGroupSDK/records/DeliveryReceiptsModelStore.h"
#include "tests/AppGroupSDK/HostBundle.h"
#include "tests/support/ChildProcess.h"

// The host application and its extensions meet only in the files of the container; here they are processes.

namespace AppGroupSDK {
namespace {

using support::ChildProcess;
using support::HostBundle;
using support::Signal;

constexpr int kKills = 200;

// A record whose every receipt bears its version, and whose length follows from it.
DeliveryReceiptsModel makeRecord(int version) {
  const DeliveryReceiptPNModel receipt(std::to_string(version), "message", "request", "type", version,
                                       std::string(100, 'x'), PNStatus::pending);
  return DeliveryReceiptsModel(std::vector(static_cast<std::size_t>(version % 7) * 5, receipt));
}

// The version of a record that is whole, or -1.
int wholeVersion(const DeliveryReceiptsModelFetchResult& fetched) {
  if (!fetched.value()) return -1;
  const auto& receipts = fetched.value()->pnData();
  if (receipts.empty()) return 0;
  const int version = std::stoi(receipts.front().uuid());
  return *fetched.value() == makeRecord(version) ? version : -1;
}

const std::vector<std::string> kOnlyTheRecord{std::string(DeliveryReceiptsModel::dataStoreFileName())};

TEST(Processes, NeverSeeARecordHalfWritten) {
  const HostBundle host;
  const DeliveryReceiptsModelStore store;
  ASSERT_EQ(store.saveModelData(makeRecord(1)), DataStoreStatus::success);

  std::vector<std::unique_ptr<ChildProcess>> processes;
  for (int process = 0; process < 3; ++process) {
    processes.push_back(std::make_unique<ChildProcess>([&] {
      for (int round = 0; round < 50; ++round) {
        EXPECT_EQ(store.saveModelData(makeRecord(1 + process + round)), DataStoreStatus::success);
      }
    }));
    processes.push_back(std::make_unique<ChildProcess>([&] {
      for (int round = 0; round < 300; ++round) ASSERT_GE(wholeVersion(store.fetchModelData()), 0);
    }));
  }
  for (const auto& process : processes) EXPECT_TRUE(process->succeeds());
  EXPECT_GE(wholeVersion(store.fetchModelData()), 0);
  EXPECT_EQ(host.files(), kOnlyTheRecord);
}

// Memory, where there is such a file system: a thousand writers spend their time on writing, not on the disk.
std::string fastestDirectory() {
  return std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path();
}

TEST(Processes, LeaveTheOldOrTheNewRecordWhenKilled) {
  const support::ScopedEnvironment temporary("TMPDIR", fastestDirectory());
  const HostBundle host;
  const DeliveryReceiptsModelStore store;
  std::mt19937 random(1);
  std::uniform_int_distribution<> delay(0, 500);
  int leftovers = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    ASSERT_EQ(store.saveModelData(makeRecord(1)), DataStoreStatus::success);
    const Signal started;
    ChildProcess writer([&] {
      for (int version = 2;; ++version) {
        store.saveModelData(makeRecord(version));
        if (version == 2) started.send();
      }
    });
    ASSERT_TRUE(started.await());
    std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
    writer.kill();
    if (host.files() != kOnlyTheRecord) ++leftovers;
    ASSERT_GE(wholeVersion(store.fetchModelData()), 0) << "after kill " << kill;
    const auto isGoneAfterReading = [&] {
      return store.fetchModelData().value() && host.files() == kOnlyTheRecord;
    };
    ASSERT_TRUE(support::eventually(isGoneAfterReading)) << "after kill " << kill;
  }
  EXPECT_GT(leftovers, 0) << "no kill ever met a write";
}

// Gives the process a disk of its own at a path: 64 KB, which the system takes away with the process. False
// where the system does not let it.
bool mountSmallDisk(const std::string& path) {
  const auto user = ::geteuid();
  const auto group = ::getegid();
  if (::unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0) return false;
  if (user != 0) {
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
  }
  return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("tmpfs", path.c_str(), "tmpfs", 0, "size=64k") == 0;
}

TEST(Processes, KeepTheOldRecordWhenTheDiskIsFullOrReadOnly) {
  const HostBundle host;
  const std::string disk = host.container();
  ChildProcess mountTrial([&] { EXPECT_TRUE(mountSmallDisk(disk)); });
  if (!mountTrial.succeeds()) GTEST_SKIP() << "this system lets no test mount a disk";
  ChildProcess child([&] {
    ASSERT_TRUE(mountSmallDisk(disk));
    const DeliveryReceiptsModelStore store;
    ASSERT_EQ(store.saveModelData(makeRecord(1)), DataStoreStatus::success);
    std::vector<DeliveryReceiptPNModel> many(1000, makeRecord(1).pnData().front());
    EXPECT_EQ(store.saveModelData(DeliveryReceiptsModel(many)), DataStoreStatus::writeFailed);
    EXPECT_EQ(wholeVersion(store.fetchModelData()), 1);
    EXPECT_EQ(host.files(), kOnlyTheRecord);
    EXPECT_EQ(store.saveModelData(makeRecord(2)), DataStoreStatus::success);
    ASSERT_EQ(::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    EXPECT_EQ(store.saveModelData(makeRecord(3)), DataStoreStatus::writeFailed);
    EXPECT_EQ(wholeVersion(store.fetchModelData()), 2);
  });
  EXPECT_TRUE(child.succeeds());
}

}  // namespace
}  // namespace AppGroupSDK
