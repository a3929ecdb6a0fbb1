#include "QXPlatform/ui/ImageDecoding.h"

#include <gtest/gtest.h>

#include <QTransform>
#include <string>
#include <utility>
#include <vector>

#include "QXPlatform/images/ImageBytes.h"
#include "tests/QXExtensionSDK/content/ui/EncodedImages.h"

namespace QXPlatform {
namespace {

using namespace std::string_literals;
using support::encoded;
using support::encodedGIF;
using support::encodedImage;
using support::encodedProgressiveJPEG;

constexpr QSize kSize(64, 36);

// Left third red, middle green, right blue: enough to see what was cut off.
QImage stripes(QSize size) {
  QImage image(size, QImage::Format_RGB32);
  for (int x = 0; x < size.width(); ++x) {
    const QColor color = 3 * x < size.width() ? Qt::red : 3 * x < 2 * size.width() ? Qt::green : Qt::blue;
    for (int y = 0; y < size.height(); ++y) image.setPixelColor(x, y, color);
  }
  return image;
}

bool isNear(const QColor& left, const QColor& right) {
  constexpr int kSlack = 12;
  return std::abs(left.red() - right.red()) < kSlack && std::abs(left.green() - right.green()) < kSlack &&
         std::abs(left.blue() - right.blue()) < kSlack;
}

std::vector<std::pair<std::string, std::string>> goodImages() {
  return {{"png", encodedImage("PNG", {200, 150}, Qt::red)},
          {"jpeg", encodedImage("JPEG", {200, 150}, Qt::red)},
          {"progressive jpeg", encodedProgressiveJPEG({200, 150})},
          {"webp", encodedImage("WEBP", {200, 150}, Qt::red)},
          {"gif", encodedGIF()},
          {"gif that ends in its second frame", encodedGIF(false)},
          {"one pixel", encodedImage("PNG", {1, 1}, Qt::red)}};
}

TEST(ImageDecoding, FillsTheSizeWhateverTheFormatAndSize) {
  for (const auto& [name, bytes] : goodImages()) {
    const QImage image = decodeImageFilling(bytes, kSize);
    ASSERT_EQ(image.size(), kSize) << name;
    EXPECT_TRUE(isNear(image.pixelColor(32, 18), Qt::red)) << name;
    EXPECT_TRUE(isNear(image.pixelColor(0, 0), Qt::red)) << name;
  }
}

TEST(ImageDecoding, CutsOffWhatStandsOver) {
  const QImage wide = decodeImageFilling(encoded(stripes({1200, 100}), "PNG"), kSize);
  EXPECT_TRUE(isNear(wide.pixelColor(1, 18), Qt::green));
  EXPECT_TRUE(isNear(wide.pixelColor(62, 18), Qt::green));
  const QImage tall = decodeImageFilling(encoded(stripes({640, 3600}), "JPEG"), kSize);
  EXPECT_TRUE(isNear(tall.pixelColor(1, 18), Qt::red));
  EXPECT_TRUE(isNear(tall.pixelColor(62, 18), Qt::blue));
}

TEST(ImageDecoding, KeepsExtremeShapesSmall) {
  for (const QSize shape : {QSize(1, 20000), QSize(20000, 1)}) {
    EXPECT_EQ(decodeImageFilling(encodedImage("PNG", shape, Qt::red), kSize).size(), kSize);
  }
}

TEST(ImageDecoding, RefusesEveryTruncation) {
  for (const auto& [name, bytes] : goodImages()) {
    if (name.starts_with("gif that")) continue;
    // A whole first frame is a whole image.
    const std::size_t whole = name == "gif" ? encodedGIF(false).size() - 12 : bytes.size();
    const std::size_t step = std::max<std::size_t>(1, whole / 97);
    for (std::size_t length = 0; length < whole; length += step) {
      EXPECT_TRUE(decodeImageFilling(bytes.substr(0, length), kSize).isNull()) << name << ' ' << length;
    }
    EXPECT_TRUE(decodeImageFilling(bytes.substr(0, whole - 1), kSize).isNull()) << name;
  }
}

TEST(ImageDecoding, DoesNotTakeAThumbnailsEndForThePhotographs) {
  // As a camera embeds it: a whole small image in a segment of the large one.
  const std::string thumbnail = encodedImage("JPEG", {16, 9}, Qt::red);
  const std::string photograph = encodedImage("JPEG", {320, 180}, Qt::red);
  const auto length = thumbnail.size() + 2;
  const std::string segment =
      "\xFF\xE1"s + static_cast<char>(length >> 8) + static_cast<char>(length & 0xFF) + thumbnail;
  const std::string whole = photograph.substr(0, 2) + segment + photograph.substr(2);
  EXPECT_FALSE(decodeImageFilling(whole, kSize).isNull());
  EXPECT_TRUE(decodeImageFilling(whole.substr(0, whole.size() - 40), kSize).isNull());
}

// A small file that declares a large square; its checksums are right, so that only the size speaks against
// it.
std::string declaredPNG(const std::string& side, const std::string& checksum) {
  return "\x89PNG\r\n\x1a\n\x00\x00\x00\rIHDR"s + side + side + "\x08\x02\x00\x00\x00"s + checksum +
         "\x00\x00\x00\x00IDAT\x35\xAF\x06\x1E\x00\x00\x00\x00IEND\xAE\x42\x60\x82"s;
}

TEST(ImageDecoding, RefusesWhatIsNoImage) {
  const std::string good = encodedImage("PNG", {200, 150}, Qt::red);
  std::string damaged = good;
  for (std::size_t i = 60; i < 80; ++i) damaged[i] = static_cast<char>(~damaged[i]);
  const std::string tooManyPixels = declaredPNG("\x00\x01\x86\xA0"s, "\x27\x30\x9C\x9F"s);
  const std::string tooMuchMemory = declaredPNG("\x00\x00\x23\x28"s, "\xE2\xB7\xE5\xED"s);
  const std::vector<std::pair<const char*, std::string>> bad{
      {"nothing", ""},
      {"a page", "<html><body>404</body></html>"},
      {"a vector image", R"(<svg xmlns="http://www.w3.org/2000/svg" width="9" height="9"/>)"},
      {"a bitmap", encodedImage("BMP", {20, 20}, Qt::red)},
      {"a signature alone", good.substr(0, 8)},
      {"damaged", damaged},
      {"100,000 by 100,000", tooManyPixels},
      {"9,000 by 9,000", tooMuchMemory},
      {"text before the image", "x" + good}};
  for (const auto& [name, bytes] : bad) EXPECT_TRUE(decodeImageFilling(bytes, kSize).isNull()) << name;
  EXPECT_TRUE(decodeImageFilling(good, {0, 10}).isNull());
}

// The JPEG with its last scan so many times over.
std::string withScansRepeated(const std::string& jpeg, int times) {
  const auto lastScan = jpeg.rfind("\xFF\xDA");
  std::string repeated = jpeg.substr(0, jpeg.size() - 2);
  for (int i = 0; i < times; ++i) repeated += jpeg.substr(lastScan, jpeg.size() - 2 - lastScan);
  return repeated + jpeg.substr(jpeg.size() - 2);
}

TEST(ImageDecoding, RefusesPhotographsThatAreKeptWholeInTooMuchMemoryOrTime) {
  const auto decodes = [](const std::string& bytes) { return !decodeImageFilling(bytes, kSize).isNull(); };
  EXPECT_TRUE(decodes(encodedProgressiveJPEG({4000, 3000})));
  EXPECT_FALSE(decodes(encodedProgressiveJPEG({8000, 6000})));
  EXPECT_TRUE(decodes(encodedImage("JPEG", {8000, 6000}, Qt::red)));
  const std::string small = encodedProgressiveJPEG({200, 150});
  EXPECT_FALSE(isImageAffordable(withScansRepeated(small, 64), ImageFormat::jpeg));
  EXPECT_TRUE(isImageAffordable(withScansRepeated(small, 20), ImageFormat::jpeg));

  // The same when a photograph that is not progressive brings its colours one after another.
  std::string apart = encodedImage("JPEG", {8000, 6000}, Qt::red);
  apart[apart.rfind("\xFF\xDA") + 4] = 1;
  EXPECT_FALSE(isImageAffordable(apart, ImageFormat::jpeg));
}

TEST(ImageDecoding, ShowsWhatTheCameraTurned) {
  // Orientation 6 in an Exif segment: to be turned by a quarter clockwise.
  const std::string exif =
      "\xFF\xE1\x00\x22"s +
      "Exif\x00\x00MM\x00\x2A\x00\x00\x00\x08\x00\x01\x01\x12\x00\x03\x00\x00\x00\x01\x00\x06\x00\x00\x00\x00\x00\x00"s;
  const QImage lying = stripes({720, 1280}).transformed(QTransform().rotate(-90));
  const std::string photograph = encoded(lying, "JPEG");
  const std::string turned = photograph.substr(0, 2) + exif + photograph.substr(2);
  const QImage image = decodeImageFilling(turned, {36, 64});
  ASSERT_EQ(image.size(), QSize(36, 64));
  EXPECT_TRUE(isNear(image.pixelColor(2, 32), Qt::red));
  EXPECT_TRUE(isNear(image.pixelColor(33, 32), Qt::blue));
}

}  // namespace
}  // namespace QXPlatform
