#include "QXPlatform/images/ImageProcess.h"

#include <signal.h>
#include <unistd.h>

#include "QXPlatform/images/ImageDecoder.h"
#include "tests/QXExtensionSDK/content/ui/EncodedImages.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

constexpr PixelSize kPlace{64, 36};

bool always() {
  return true;
}

bool decodes(const std::string& bytes) {
  return ImageProcess::shared().decode(bytes, kPlace, always).has_value();
}

std::vector<pid_t> childrenOf(pid_t process) {
  const std::string name = std::to_string(process);
  std::ifstream list("/proc/" + name + "/task/" + name + "/children");
  return {std::istream_iterator<pid_t>(list), {}};
}

// Takes seconds, for a few kilobytes: the last of its scans thousands of times over.
std::string slowImage() {
  const std::string jpeg = support::encodedProgressiveJPEG({4000, 3000});
  const auto lastScan = jpeg.rfind("\xFF\xDA");
  const std::string scan = jpeg.substr(lastScan, jpeg.size() - 2 - lastScan);
  std::string repeated = jpeg.substr(0, jpeg.size() - 2);
  for (int i = 0; i < 2000; ++i) repeated += scan;
  return repeated + jpeg.substr(jpeg.size() - 2);
}

TEST(ImageProcess, DecodesAsInThisProcess) {
  const std::string image = support::encodedImage("PNG", {200, 150}, Qt::red);
  const auto bitmap = ImageProcess::shared().decode(image, kPlace, always);
  ASSERT_TRUE(bitmap);
  EXPECT_EQ(bitmap->size, kPlace);
  EXPECT_EQ(bitmap->pixels, decodeImage(image, kPlace)->pixels);
  EXPECT_FALSE(decodes("no image"));
}

// The one needs 130 MB, of which its header says nothing; the other takes a minute.
TEST(ImageProcess, EndsWhatTakesTooMuchMemoryOrTime) {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_FALSE(decodes(support::contentsOf(QX_DEEP_IMAGE)));
#endif
  const std::string slow = slowImage();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(decodes(slow));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(50));
  EXPECT_TRUE(decodes(support::encodedImage("PNG", {20, 20}, Qt::red)));
}

TEST(ImageProcess, DropsAnImageThatNobodyWantsAnyMore) {
  const std::string slow = slowImage();
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

TEST(ImageProcess, BeginsAnewWhenSomebodyHasEndedTheProcess) {
  const std::string image = support::encodedImage("PNG", {20, 20}, Qt::red);
  ASSERT_TRUE(decodes(image));
  const auto servers = childrenOf(::getpid());
  ASSERT_EQ(servers.size(), 1U);
  ::kill(servers.front(), SIGKILL);
  EXPECT_TRUE(support::eventually([&] { return decodes(image); }));
}

}  // namespace
}  // namespace QXPlatform
