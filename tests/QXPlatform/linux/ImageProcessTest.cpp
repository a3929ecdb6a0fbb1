#include "QXPlatform/images/ImageProcess.h"

#include <signal.h>
#include <unistd.h>

#include "tests/support/EncodedImages.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

constexpr PixelSize kPlace{64, 36};

std::vector<pid_t> childrenOf(pid_t process) {
  const std::string name = std::to_string(process);
  std::ifstream list("/proc/" + name + "/task/" + name + "/children");
  return {std::istream_iterator<pid_t>(list), {}};
}

TEST(ImageProcessesTest, DropsAnImageThatNobodyWantsAnyMore) {
  const std::string slow = support::encodedSlowImage();
  const auto begin = std::chrono::steady_clock::now();
  const auto isWanted = [&] {
    return std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(100);
  };
  EXPECT_FALSE(ImageProcess::shared().decode(slow, kPlace, isWanted));
  // Nor does anyone go on with it.
  const auto servers = childrenOf(::getpid());
  ASSERT_EQ(servers.size(), 1U);
  EXPECT_TRUE(support::eventually([&] { return childrenOf(servers.front()).empty(); }));
}

TEST(ImageProcessesTest, BeginsAnewWhenSomebodyHasEndedTheProcess) {
  const std::string image = support::encodedImage("PNG", {20, 20}, Qt::red);
  const auto decodes = [&] {
    return ImageProcess::shared().decode(image, kPlace, [] { return true; }).has_value();
  };
  ASSERT_TRUE(decodes());
  const auto servers = childrenOf(::getpid());
  ASSERT_EQ(servers.size(), 1U);
  ::kill(servers.front(), SIGKILL);
  EXPECT_TRUE(support::eventually([&] { return decodes(); }));
}

}  // namespace
}  // namespace QXPlatform
