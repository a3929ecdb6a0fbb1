#pragma once

#include <QImage>
#include <QSize>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/network/URLSession.h"

namespace QXExtensionSDK {

// What became of an image.
struct ImageDownloadResult {
  enum class Kind : std::uint8_t { image, error, noData, notAnImage };

  Kind kind;
  QImage image = {};
  std::optional<QXPlatform::URLError> error = {};
};

// Fetches one image and decodes it at the size it is shown, away from the main thread. Dropping it ends the
// transfer, and the completion is not called any more. Main thread.
class ImageDownload : public std::enable_shared_from_this<ImageDownload> {
 public:
  using Completion = std::function<void(ImageDownloadResult)>;
  // In pixels; asked when the bytes are there, since the view may have got its size only meanwhile.
  using PixelSize = std::function<QSize()>;

  static std::shared_ptr<ImageDownload> start(QXPlatform::URLSession& session, const QXPlatform::URL& url,
                                              std::chrono::duration<double> requestTimeOut,
                                              PixelSize pixelSize, Completion completion);
  ~ImageDownload();
  ImageDownload(const ImageDownload&) = delete;
  ImageDownload& operator=(const ImageDownload&) = delete;

 private:
  ImageDownload(PixelSize pixelSize, Completion completion);

  void received(const std::shared_ptr<const QXPlatform::Data>& data,
                const std::optional<QXPlatform::URLError>& error);

  const PixelSize pixelSize_;
  const Completion completion_;
  std::shared_ptr<QXPlatform::URLSessionTask> task_;
};

}  // namespace QXExtensionSDK
