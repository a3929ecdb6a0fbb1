#pragma once

#include <QApplication>

#include "QXExtensionSDK/content/CarouselClickStoring.h"
#include "QXExtensionSDK/content/CarouselViewController.h"
#include "QXExtensionSDK/content/VTQXNotificationViewController.h"
#include "QXPlatform/ui/ContentExtensionHost.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/EncodedImages.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"

namespace support {

// Runs the application's events until `condition()` holds; returns whether it came to hold in time.
template <typename Condition>
bool pumpUntil(Condition condition, std::chrono::milliseconds patience = kPatience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
  }
  return true;
}

// Lets the taps so far have all their effects.
inline void finishTaps() {
  QXExtensionSDK::clickSavingQueue().sync([] {});
  QCoreApplication::sendPostedEvents();
}

// Serves images by path, each as it is told to.
class ImageServer {
 public:
  ImageServer() {
    backend::LoopbackServerOptions options;
    options.handler = [this](const backend::Request& request) -> std::optional<backend::Response> {
      Answer answer{{.status = 404, .body = "<html>"}, {}};
      {
        const std::lock_guard lock(mutex_);
        const auto found = answers_.find(request.path);
        if (found != answers_.end()) answer = found->second;
      }
      if (answer.released.valid()) answer.released.wait_for(kPatience);
      return answer.response;
    };
    server_ = std::make_unique<backend::LoopbackServer>(std::move(options));
  }

  // Answers only once `released` is, when there is one.
  std::string serve(const std::string& path, backend::Response response,
                    std::shared_future<void> released = {}) {
    const std::lock_guard lock(mutex_);
    answers_[path] = {std::move(response), std::move(released)};
    return server_->url(path);
  }
  std::string serveColor(const std::string& path, const QColor& color) {
    return serve(path, {.body = encodedImage("PNG", {64, 36}, color)});
  }

  std::string url(const std::string& path) const { return server_->url(path); }
  // The paths asked for, in order.
  std::vector<std::string> paths() const {
    std::vector<std::string> paths;
    for (const auto& request : server_->requests()) paths.push_back(request.path);
    return paths;
  }

 private:
  struct Answer {
    backend::Response response;
    std::shared_future<void> released;
  };

  std::mutex mutex_;
  std::map<std::string, Answer> answers_;
  std::unique_ptr<backend::LoopbackServer> server_;
};

// The JSON of one panel.
struct PanelText {
  std::string url;
  std::string title = {};
  std::string subTitle = {};
  std::string altText = {};

  std::string json() const {
    const auto text = [](const char* key, const std::string& value) {
      return value.empty() ? "" : R"(,")" + std::string(key) + R"(":{"tx":")" + value + R"("})";
    };
    return R"({"id":"p","md":{"ul":")" + url + '"' + text("at", altText) + "}" + text("ti", title) +
           text("sti", subTitle) + R"(,"ac":[{"t":"0"}]})";
  }
};

inline std::string panelList(const std::vector<PanelText>& panels) {
  std::string list;
  for (const PanelText& panel : panels) list += (list.empty() ? "" : ",") + panel.json();
  return "[" + list + "]";
}

// A content extension that shows every log line, in the system's hands.
class TestExtension final : public QXExtensionSDK::VTQXNotificationViewController {
 public:
  std::optional<QXExtensionSDK::VTContentExtensionConfig> vtqxProvideConfig() override {
    return QXExtensionSDK::VTContentExtensionConfig(QXExtensionSDK::LogLevel::debug, 15.0);
  }
};

struct Expanded {
  explicit Expanded(int width = 360)
      : host(std::make_unique<QXPlatform::ContentExtensionHost>(extension, width)) {}

  void deliverItems(const std::string& items, std::string_view more = "") {
    auto push = R"({"_sid":"VTQX","_m":"m","_rf":)" + carousel(items, more) + "}";
    host->deliver(requestOf(push));
  }
  void deliver(const std::vector<PanelText>& panels, std::string_view more = "") {
    deliverItems(panelList(panels), more);
  }

  // REQUIRES: a carousel was delivered.
  QXExtensionSDK::CarouselViewController& screen() const {
    return dynamic_cast<QXExtensionSDK::CarouselViewController&>(*extension->coordinatorVC());
  }
  const QXExtensionSDK::CarouselImageView& image(std::size_t panel) const {
    return screen().panelView(panel)->imageView();
  }
  bool waitForImage(std::size_t panel) const {
    return pumpUntil(
        [&] { return image(panel).imageLoadingState() != QXExtensionSDK::ImageLoadingState::downloading; });
  }
  QImage drawn() const { return host->view().grab().toImage(); }
  // In points.
  QColor colorAt(const QPoint& point) const { return drawn().pixelColor(point * 2); }

  std::shared_ptr<TestExtension> extension = std::make_shared<TestExtension>();
  std::unique_ptr<QXPlatform::ContentExtensionHost> host;
};

}  // namespace support
