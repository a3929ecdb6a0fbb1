#pragma once

#include <QImage>
#include <QRegion>
#include <QWidget>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "QXExtensionSDK/content/CarouselImageViewDelegate.h"
#include "QXExtensionSDK/content/ImageDownload.h"
#include "QXExtensionSDK/content/PanelItemComponent.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/network/URLSession.h"
#include "QXPlatform/ui/UIActivityIndicatorView.h"
#include "QXPlatform/ui/UILabel.h"

namespace QXExtensionSDK {

enum class ImageLoadingState : std::uint8_t { notStarted, downloading, success, failed };

// A panel's image in its rounded frame: fetched when it is first shown, and again, three times in all, when
// it is shown after a failure. Main thread.
class CarouselImageView final : public QWidget {
 public:
  // The delegate must outlive the view.
  CarouselImageView(std::shared_ptr<QXPlatform::URLSession> session, CarouselImageViewDelegate& delegate,
                    const Logger& logger, QWidget* parent);
  ~CarouselImageView() override;

  void setFrame(const QRect& frame);
  void configure(const MediaComponent& viewModel, std::int64_t panelIndex);

  // Where nothing of its parent is to be seen, drawn by such a painter.
  QRegion opaqueRegion(const QPainter& painter) const;
  // As the payload gives it.
  const std::string& url() const { return url_; }
  ImageLoadingState imageLoadingState() const { return imageLoadingState_; }
  std::int64_t imageDownloadCount() const { return imageDownloadCount_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void startDownload(const QXPlatform::URL& url);
  void downloadCompleted(const ImageDownloadResult& result);
  void logFailure(const ImageDownloadResult& result) const;
  void showFailure(bool isFailure);
  void updateAppearance();
  QColor spinnerColor() const;
  void paintBacking(QPainter& painter, const QPainterPath& frame) const;
  void layoutSubviews();
  void layoutFailure();

  const std::shared_ptr<QXPlatform::URLSession> session_;
  CarouselImageViewDelegate& delegate_;
  const Logger& logger_;
  std::int64_t panelIndex_ = 0;
  std::string url_;
  ImageLoadingState imageLoadingState_ = ImageLoadingState::notStarted;
  std::int64_t imageDownloadCount_ = 0;
  std::shared_ptr<ImageDownload> download_;

  QColor backgroundColor_;
  QImage image_;
  QXPlatform::UIActivityIndicatorView* spinnerView_;
  QWidget* failureImageView_;
  QXPlatform::UILabel* altTextLabel_;
};

}  // namespace QXExtensionSDK
