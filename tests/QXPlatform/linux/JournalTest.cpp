#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/log/Log.h"
#include "QXPlatform/log/LogSubject.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

constexpr const char* kJournalSocket = "/run/systemd/journal/socket";

std::string standardErrorAsJournalStream() {
  struct stat status {};
  EXPECT_EQ(fstat(STDERR_FILENO, &status), 0);
  return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

// Stands where the journal would, on a machine that has none.
class JournalTest : public testing::Test {
 protected:
  void SetUp() override {
    std::error_code error;
    if (std::filesystem::exists(kJournalSocket, error)) GTEST_SKIP() << "a journal runs here";
    std::filesystem::create_directories(std::filesystem::path(kJournalSocket).parent_path(), error);
    sockaddr_un address{AF_UNIX, {}};
    std::string_view(kJournalSocket).copy(address.sun_path, sizeof address.sun_path - 1);
    bound_ = bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    if (!bound_) GTEST_SKIP() << "may not stand in for the journal";
  }
  void TearDown() override {
    if (bound_) unlink(kJournalSocket);
  }

  std::string received() const {
    std::array<char, 4096> bytes{};
    const ssize_t count = recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    return count > 0 ? std::string(bytes.data(), static_cast<std::size_t>(count)) : "";
  }

 private:
  const FileDescriptor socket_{socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
  bool bound_ = false;
};

TEST_F(JournalTest, ARecordOfAProcessUnderItReachesTheJournalAsFields) {
  const support::ScopedEnvironment stream("JOURNAL_STREAM", standardErrorAsJournalStream());
  const ScopedLogSubject subject(std::make_shared<const std::string>("push-1"));
  os_log({"ServiceExtension", "Network", LogType::fault, "two\nlines"});
  const std::string fields = received();
  for (const std::string_view field :
       {"PRIORITY=2\n", "QX_SUBSYSTEM=ServiceExtension\n", "QX_CATEGORY=Network\n", "QX_TYPE=fault\n",
        "QX_PUSH=push-1\n", "two\nlines\n"}) {
    EXPECT_NE(fields.find(field), std::string::npos) << field << fields;
  }
}

// What is inherited from a service that has redirected its own standard error.
TEST(OtherStreamTest, AnotherStreamThanStandardErrorIsNotTheJournals) {
  const support::ScopedEnvironment stream("JOURNAL_STREAM", standardErrorAsJournalStream() + "0");
  testing::internal::CaptureStderr();
  os_log({"s", "c", LogType::error, "m"});
  EXPECT_NE(testing::internal::GetCapturedStderr().find("[error] s c: m\n"), std::string::npos);
}

}  // namespace
}  // namespace QXPlatform
