#include "QXPlatform/ui/ImageDecoding.h"

#include <QCoreApplication>
#include <algorithm>
#include <atomic>
#include <cstring>
#include <utility>

#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/images/ImageProcess.h"
#include "QXPlatform/ui/MainQueue.h"

namespace QXPlatform {

namespace {

QImage makeImage(const Bitmap& bitmap, QSize size) {
  constexpr std::size_t kBytesAPixel = 4;
  QImage image(bitmap.size.width, bitmap.size.height, QImage::Format_RGBA8888_Premultiplied);
  if (image.isNull()) return image;
  std::memcpy(image.bits(), bitmap.pixels.data(), bitmap.pixels.size());
  bool isOpaque = true;
  for (std::size_t i = 3; i < bitmap.pixels.size() && isOpaque; i += kBytesAPixel)
    isOpaque = bitmap.pixels[i] == 0xFF;
  if (image.size() != size) image = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  image.convertTo(isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
  return image;
}

// One image after the other. The thread must not outlive the application object, whose end takes the toolkit
// down.
class Decoder {
 public:
  static Decoder& shared() {
    static Decoder decoder;
    return decoder;
  }

  void async(std::shared_ptr<const Data> bytes, QSize size, std::function<bool()> isWanted,
             std::function<void(QImage)> completion) {
    queue_.async([this, bytes = std::move(bytes), size, isWanted = std::move(isWanted),
                  completion = std::move(completion)] {
      const auto goesOn = [this, &isWanted] { return !ended_ && isWanted(); };
      const auto bitmap = ImageProcess::shared().decode(bytes->view(), {size.width(), size.height()}, goesOn);
      if (!goesOn()) return;
      dispatchMainAsync(
          [completion, image = bitmap ? makeImage(*bitmap, size) : QImage()] { completion(image); });
    });
  }

 private:
  Decoder() {
    qAddPostRoutine([] { shared().end(); });
  }

  void end() {
    ended_ = true;
    queue_.sync([] {});
  }

  const DispatchQueue queue_{"com.vtqx.image.decoding", DispatchQueue::Attribute::serial};
  std::atomic<bool> ended_ = false;
};

}  // namespace

void decodeImageFillingAsync(std::shared_ptr<const Data> bytes, QSize size, std::function<bool()> isWanted,
                             std::function<void(QImage)> completion) {
  Decoder::shared().async(std::move(bytes), size, std::move(isWanted), std::move(completion));
}

}  // namespace QXPlatform
