#include "QXPlatform/ui/ImageDecoding.h"

#include <QCoreApplication>
#include <atomic>
#include <memory>
#include <utility>

#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/images/ImageProcess.h"
#include "QXPlatform/ui/MainQueue.h"

namespace QXPlatform {

namespace {

// Of the picture's own memory when it is as large as it is shown.
QImage makeImage(const Picture& picture, QSize size) {
  constexpr qsizetype kBytesAPixel = 4;
  auto owner = std::make_unique<Picture>(picture);
  const QImage image(
      reinterpret_cast<const uchar*>(picture.pixels.get()), picture.size.width, picture.size.height,
      kBytesAPixel * picture.size.width,
      picture.isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied,
      [](void* held) { delete static_cast<Picture*>(held); }, owner.get());
  if (!image.isNull()) static_cast<void>(owner.release());
  return image.size() == size ? image : image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
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
      const auto picture =
          ImageProcess::shared().decode(bytes->view(), {size.width(), size.height()}, goesOn);
      if (!goesOn()) return;
      dispatchMainAsync(
          [completion, image = picture ? makeImage(*picture, size) : QImage()] { completion(image); });
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
