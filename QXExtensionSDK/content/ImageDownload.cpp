#include "QXExtensionSDK/content/ImageDownload.h"

#include <utility>

#include "QXPlatform/ui/ImageDecoding.h"
#include "QXPlatform/ui/MainQueue.h"

namespace QXExtensionSDK {

namespace {

using Kind = ImageDownloadResult::Kind;

}  // namespace

// Off the main thread the download is known by weak references that nobody locks there: it lives and dies on
// the main thread alone.
std::shared_ptr<ImageDownload> ImageDownload::start(QXPlatform::URLSession& session,
                                                    const QXPlatform::URL& url,
                                                    std::chrono::duration<double> requestTimeOut,
                                                    PixelSize pixelSize, Completion completion) {
  std::shared_ptr<ImageDownload> download(new ImageDownload(std::move(pixelSize), std::move(completion)));
  QXPlatform::URLRequest request(url, QXPlatform::CachePolicy::useProtocolCachePolicy, requestTimeOut);
  download->task_ = session.dataTask(
      std::move(request), [weak = std::weak_ptr(download)](std::optional<QXPlatform::Data> data,
                                                           const auto& /*response*/, const auto& error) {
        auto bytes = std::make_shared<const QXPlatform::Data>(std::move(data).value_or(QXPlatform::Data()));
        QXPlatform::dispatchMainAsync([weak, bytes = std::move(bytes), error] {
          if (const auto self = weak.lock()) self->received(bytes, error);
        });
      });
  download->task_->resume();
  return download;
}

ImageDownload::ImageDownload(PixelSize pixelSize, Completion completion)
    : pixelSize_(std::move(pixelSize)), completion_(std::move(completion)) {}

ImageDownload::~ImageDownload() {
  task_->cancel();
}

void ImageDownload::received(const std::shared_ptr<const QXPlatform::Data>& data,
                             const std::optional<QXPlatform::URLError>& error) {
  if (error) return completion_({Kind::error, {}, error});
  if (data->empty()) return completion_({Kind::noData});
  QXPlatform::decodeImageFillingAsync(
      data, pixelSize_(), [weak = weak_from_this()] { return !weak.expired(); },
      [weak = weak_from_this()](const QImage& image) {
        const auto self = weak.lock();
        if (self == nullptr) return;
        self->completion_({image.isNull() ? Kind::notAnImage : Kind::image, image});
      });
}

}  // namespace QXExtensionSDK
