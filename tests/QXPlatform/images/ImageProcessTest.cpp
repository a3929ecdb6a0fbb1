#include "QXPlatform/images/ImageProcess.h"

#include "QXPlatform/images/ImageDecoder.h"
#include "tests/support/EncodedImages.h"
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

TEST(ImageProcess, DecodesAsInThisProcess) {
  const std::string image = support::encodedImage("PNG", {200, 150}, Qt::red);
  QImage transparent(200, 150, QImage::Format_ARGB32);
  transparent.fill(QColor(10, 200, 100, 128));
  for (const std::string& each : {image, support::encoded(transparent, "PNG")}) {
    const auto picture = ImageProcess::shared().decode(each, kPlace, always);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->size, kPlace);
    EXPECT_EQ(picture->isOpaque, each == image);
    const std::pmr::vector<std::uint8_t> bytes = decodeImage(each, kPlace)->pixels;
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
      const QColor expected(bytes[i + 2], bytes[i + 1], bytes[i], bytes[i + 3]);
      ASSERT_EQ(picture->pixels.get()[i / 4], expected.rgba());
    }
  }
  EXPECT_FALSE(decodes("no image"));
}

TEST(ImageProcess, ShowsTheLargestImageInPlacesOfEverySize) {
#ifdef QX_SANITIZED
  GTEST_SKIP() << "takes more than its two seconds of processor here";
#endif
  const std::string largest = support::encodedInterlacedPNG({5000, 4000});
  for (const int scale : {1, 3, 4}) {
    const PixelSize place{1000 * scale, 1000 * scale};
    EXPECT_TRUE(ImageProcess::shared().decode(largest, place, always)) << scale;
  }
}

// The one needs 130 MB, of which its header says nothing; the other takes a minute.
TEST(ImageProcess, EndsWhatTakesTooMuchMemoryOrTime) {
  EXPECT_FALSE(decodes(support::contentsOf(QX_DEEP_IMAGE)));
  const std::string slow = support::encodedSlowImage();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(decodes(slow));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(50));
  EXPECT_TRUE(decodes(support::encodedImage("PNG", {20, 20}, Qt::red)));
}

}  // namespace
}  // namespace QXPlatform
