#include "QXPlatform/images/ImageDecoder.h"

#include <QColorSpace>
#include <QTransform>

#include "tests/support/EncodedImages.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

using namespace std::string_literals;
using support::encoded;
using support::encodedGIF;
using support::encodedImage;

constexpr PixelSize kPlace{64, 36};

bool isShown(const std::string& bytes, PixelSize place = kPlace) {
  return decodeImage(bytes, place).has_value();
}

QColor colorAt(const Bitmap& bitmap, int x, int y) {
  const std::uint8_t* pixel = &bitmap.pixels.at(static_cast<std::size_t>(y * bitmap.size.width + x) * 4);
  return {pixel[2], pixel[1], pixel[0], pixel[3]};
}

bool isNear(const QColor& left, const QColor& right) {
  constexpr int kSlack = 30;
  return std::abs(left.red() - right.red()) < kSlack && std::abs(left.green() - right.green()) < kSlack &&
         std::abs(left.blue() - right.blue()) < kSlack && left.alpha() == right.alpha();
}

// Left third red, middle green, right blue.
void expectStripes(const std::optional<Bitmap>& bitmap, const std::string& name) {
  ASSERT_TRUE(bitmap) << name;
  ASSERT_EQ(bitmap->size, kPlace) << name;
  EXPECT_TRUE(isNear(colorAt(*bitmap, 8, 18), {220, 30, 20})) << name;
  EXPECT_TRUE(isNear(colorAt(*bitmap, 32, 18), {20, 200, 40})) << name;
  EXPECT_TRUE(isNear(colorAt(*bitmap, 56, 18), {30, 40, 210})) << name;
}

QImage stripes(QSize size) {
  QImage image(size, QImage::Format_RGB32);
  for (int x = 0; x < size.width(); ++x) {
    const QColor color = 3 * x < size.width()       ? QColor(220, 30, 20)
                         : 3 * x < 2 * size.width() ? QColor(20, 200, 40)
                                                    : QColor(30, 40, 210);
    for (int y = 0; y < size.height(); ++y) image.setPixelColor(x, y, color);
  }
  return image;
}

QImage noise(QSize size) {
  QImage image(size, QImage::Format_RGB32);
  std::uint32_t state = 1;
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) {
      state = state * 1664525 + 1013904223;
      image.setPixel(x, y, 0xFF000000 | state >> 8);
    }
  }
  return image;
}

std::string sample(const char* name) {
  return support::contentsOf(std::filesystem::path(QX_IMAGE_SAMPLES) / name);
}

TEST(ImageDecoder, ReadsEveryKindOfEveryFormat) {
  int count = 0;
  for (const auto& file : std::filesystem::directory_iterator(QX_IMAGE_SAMPLES)) {
    expectStripes(decodeImage(support::contentsOf(file.path()), kPlace), file.path().filename().string());
    ++count;
  }
  EXPECT_GE(count, 22);
}

TEST(ImageDecoder, CutsOffWhatStandsOverAndNeverEnlarges) {
  expectStripes(decodeImage(encoded(stripes({640, 3600}), "JPEG"), kPlace), "tall");
  const auto wide = decodeImage(encoded(stripes({1200, 100}), "PNG"), kPlace);
  EXPECT_TRUE(isNear(colorAt(*wide, 1, 18), {20, 200, 40}));
  EXPECT_TRUE(isNear(colorAt(*wide, 62, 18), {20, 200, 40}));
  EXPECT_EQ(decodeImage(encodedImage("PNG", {32, 18}, Qt::red), kPlace)->size, (PixelSize{32, 18}));
  EXPECT_EQ(decodeImage(encodedImage("PNG", {1, 20000}, Qt::red), kPlace)->size, (PixelSize{1, 1}));
}

TEST(ImageDecoder, TakesTheMeanOfThePixelsByTheirAlpha) {
  QImage image(2, 2, QImage::Format_ARGB32);
  image.fill(Qt::transparent);
  image.setPixelColor(0, 0, Qt::red);
  image.setPixelColor(1, 1, QColor(0, 0, 255, 128));
  const auto mean = decodeImage(encoded(image, "PNG"), {1, 1});
  EXPECT_EQ(mean->pixels, (std::pmr::vector<std::uint8_t>{32, 0, 64, 96}));
}

// What is put in at a place of the bytes, or taken away at their end.
struct Damage {
  const char* name;
  std::string bytes;
};

TEST(ImageDecoder, ShowsWhateverHasAllItsPixels) {
  const std::string jpeg = encoded(noise({200, 150}), "JPEG");
  const std::string png = encoded(noise({200, 150}), "PNG");
  const std::string scans = sample("scans.jpg");
  const std::size_t segment = 2 + 2 + 16;  // behind the first one
  const auto with = [](std::string bytes, std::size_t position, const std::string& more) {
    return bytes.insert(position, more);
  };
  const auto changed = [](std::string bytes, std::size_t fromEnd) {
    bytes[bytes.size() - fromEnd] ^= 1;
    return bytes;
  };
  const std::vector<Damage> cases{
      {"bytes between the segments", with(jpeg, segment, "\x01\x02\x03"s)},
      {"a restart marker between the segments", with(jpeg, segment, "\xFF\xD3"s)},
      {"a restart marker inside the scan", with(jpeg, jpeg.size() / 2, "\xFF\xD3"s)},
      {"a restart marker behind the scan", with(jpeg, jpeg.size() - 2, "\xFF\xD3"s)},
      {"no end marker", jpeg.substr(0, jpeg.size() - 2)},
      {"progressive without end marker",
       [](const std::string& whole) {
         return whole.substr(0, whole.size() - 2);
       }(support::encodedProgressiveJPEG({200, 150}))},
      {"several scans without end marker", scans.substr(0, scans.size() - 2)},
      {"bytes behind the end", jpeg + "more"},
      {"no last chunk", png.substr(0, png.size() - 12)},
      {"a wrong sum of the last chunk", changed(png, 1)},
      {"a wrong sum of the data's chunk", changed(png, 13)},
      {"a wrong sum of the pixels", changed(png, 17)},
      {"no terminator, and a second frame cut off", encodedGIF(false)},
      {"no terminator of the frame", encodedGIF(false).substr(0, encodedGIF(false).size() - 13)}};
  for (const auto& [name, bytes] : cases) EXPECT_TRUE(isShown(bytes)) << name;
}

TEST(ImageDecoder, RefusesEveryImageWithMissingPixels) {
  std::vector<Damage> images{{"progressive", support::encodedProgressiveJPEG({200, 150})},
                             {"gif", encodedGIF(false).substr(0, encodedGIF(false).size() - 13)}};
  for (const char* name : {"scans.jpg", "ordinary.avif", "run-lengths-8-bit.bmp", "run-lengths-4-bit.bmp"}) {
    images.push_back({name, sample(name)});
  }
  for (const char* format : {"PNG", "JPEG", "WEBP", "BMP"}) {
    images.push_back({format, encoded(noise({200, 150}), format)});
  }
  for (const auto& [name, bytes] : images) {
    const std::size_t step = std::max<std::size_t>(1, bytes.size() / 97);
    for (std::size_t length = 0; length + 24 < bytes.size(); length += step) {
      EXPECT_FALSE(isShown(bytes.substr(0, length))) << name << ' ' << length;
    }
    // Between two scans nothing is cut in two.
    for (auto scan = bytes.find("\xFF\xDA"); scan != std::string::npos;
         scan = bytes.find("\xFF\xDA", scan + 1)) {
      EXPECT_FALSE(isShown(bytes.substr(0, scan))) << name << ' ' << scan;
    }
  }
}

TEST(ImageDecoder, DoesNotTakeAThumbnailsEndForThePhotographs) {
  // As a camera embeds it: a whole small image in a segment of the large one.
  const std::string thumbnail = encodedImage("JPEG", {16, 9}, Qt::red);
  const std::string photograph = encoded(noise({320, 180}), "JPEG");
  const auto length = thumbnail.size() + 2;
  const std::string segment =
      "\xFF\xE1"s + static_cast<char>(length >> 8) + static_cast<char>(length & 0xFF) + thumbnail;
  const std::string whole = photograph.substr(0, 2) + segment + photograph.substr(2);
  EXPECT_TRUE(isShown(whole));
  EXPECT_FALSE(isShown(whole.substr(0, whole.size() - 40)));
}

// A small file that declares a large square; its sums are right, so that only the size speaks against it.
std::string declaredPNG(const std::string& side, const std::string& checksum) {
  return "\x89PNG\r\n\x1a\n\x00\x00\x00\rIHDR"s + side + side + "\x08\x02\x00\x00\x00"s + checksum +
         "\x00\x00\x00\x00IDAT\x35\xAF\x06\x1E\x00\x00\x00\x00IEND\xAE\x42\x60\x82"s;
}

TEST(ImageDecoder, RefusesWhatIsNoImage) {
  const std::string good = encoded(noise({200, 150}), "PNG");
  std::string damaged = good;
  for (std::size_t i = 60; i < 80; ++i) damaged[i] = static_cast<char>(~damaged[i]);
  const std::vector<Damage> bad{
      {"nothing", ""},
      {"a page", "<html><body>404</body></html>"},
      {"a vector image", R"(<svg xmlns="http://www.w3.org/2000/svg" width="9" height="9"/>)"},
      {"a signature alone", good.substr(0, 8)},
      {"damaged", damaged},
      {"100,000 by 100,000", declaredPNG("\x00\x01\x86\xA0"s, "\x27\x30\x9C\x9F"s)},
      {"text before the image", "x" + good}};
  for (const auto& [name, bytes] : bad) EXPECT_FALSE(isShown(bytes)) << name;
  EXPECT_FALSE(isShown(good, {0, 10}));
}

std::string encodedLosslessWebP(QSize size) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(Qt::red);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  QImageWriter writer(&buffer, "webp");
  writer.setQuality(100);
  writer.write(image);
  return bytes.toStdString();
}

TEST(ImageDecoder, ShowsAPhotographAtEveryWidthOrAtNone) {
#ifdef QX_SANITIZED
  GTEST_SKIP() << "Under a sanitizer the largest photographs take more than their two seconds";
#endif
  const std::vector<std::pair<std::string, bool>> photographs{
      {encodedImage("JPEG", {8000, 6000}, Qt::red), true},
      {support::encodedProgressiveJPEG({6000, 4000}), true},
      {support::encodedProgressiveJPEG({8000, 6000}), false},
      {encodedLosslessWebP({4800, 4000}), true},
      {encodedLosslessWebP({5200, 4000}), false}};
  for (const auto& [bytes, expected] : photographs) {
    for (const int width : {112, 320, 375, 1000, 2000}) {
      EXPECT_EQ(isShown(bytes, {width, width * 9 / 16}), expected) << bytes.size() << ' ' << width;
    }
  }
}

TEST(ImageDecoder, SkipsTextAndCommentsWithoutKeepingThem) {
  const std::string jpeg = encodedImage("JPEG", {64, 36}, Qt::red);
  for (const char* marker : {"\xFF\xFE", "\xFF\xE1", "\xFF\xE2"}) {
    std::string flood = jpeg.substr(0, 2);
    for (int i = 0; i < 500'000; ++i) flood += marker + "\x00\x02"s;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(isShown(flood + jpeg.substr(2)));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  }
}

TEST(ImageDecoder, BringsColoursToSRGB) {
  // Says that its red is blue.
  const QColorSpace swapped({0.3127, 0.329}, {0.15, 0.06}, {0.3, 0.6}, {0.64, 0.33},
                            QColorSpace::TransferFunction::SRgb);
  QImage image(64, 36, QImage::Format_RGB32);
  image.fill(QColor(220, 30, 20));
  image.setColorSpace(swapped);
  for (const char* format : {"PNG", "JPEG", "WEBP"}) {
    const auto bitmap = decodeImage(encoded(image, format), kPlace);
    EXPECT_TRUE(isNear(colorAt(bitmap.value(), 32, 18), {20, 30, 220})) << format;
  }
  // A PNG's gamma of 1: a quarter of the light is half of sRGB's value.
  const std::string png = encodedImage("PNG", {64, 36}, QColor(64, 64, 64));
  const std::string linear = png.substr(0, 33) + "\0\0\0\4gAMA\0\1\x86\xA0\0\0\0\0"s + png.substr(33);
  EXPECT_TRUE(isNear(colorAt(decodeImage(linear, kPlace).value(), 32, 18), {137, 137, 137}));
}

TEST(ImageDecoder, ShowsWhatTheCameraTurned) {
  // An Exif segment with the one entry.
  const auto exif = [](char orientation) {
    return "\xFF\xE1\x00\x22"s + "Exif\0\0MM\0\x2A\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0"s + orientation +
           "\0\0\0\0\0\0"s;
  };
  QImage upright(64, 36, QImage::Format_RGB32);
  upright.fill(Qt::black);
  for (int x = 0; x < 32; ++x) {
    for (int y = 0; y < 18; ++y) upright.setPixelColor(x, y, Qt::white);
  }
  // What the camera does; each is undone.
  const std::vector<QTransform> turns{{},
                                      QTransform().scale(-1, 1),
                                      QTransform().rotate(180),
                                      QTransform().scale(1, -1),
                                      QTransform(0, 1, 1, 0, 0, 0),
                                      QTransform().rotate(-90),
                                      QTransform(0, -1, -1, 0, 0, 0),
                                      QTransform().rotate(90)};
  for (std::size_t i = 0; i < turns.size(); ++i) {
    const std::string photograph = encoded(upright.transformed(turns[i]), "JPEG");
    const auto bitmap =
        decodeImage(photograph.substr(0, 2) + exif(static_cast<char>(i + 1)) + photograph.substr(2), kPlace);
    ASSERT_EQ(bitmap->size, kPlace) << i + 1;
    EXPECT_TRUE(isNear(colorAt(*bitmap, 8, 8), Qt::white)) << i + 1;
    EXPECT_TRUE(isNear(colorAt(*bitmap, 56, 8), Qt::black)) << i + 1;
    EXPECT_TRUE(isNear(colorAt(*bitmap, 8, 30), Qt::black)) << i + 1;
  }
}

}  // namespace
}  // namespace QXPlatform
