#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>

#include "QXExtensionSDK/content/CarouselViewController.h"
#include "QXExtensionSDK/content/VTQXNotificationViewController.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/ui/ContentExtensionHost.h"
#include "tools/qx/CarouselOptions.h"
#include "tools/qx/CarouselSteps.h"

namespace qx {

// A content extension in which one carousel is looked at. Each run answers why it was refused, or nothing.
// REQUIRES: an application object.
class CarouselSession {
 public:
  explicit CarouselSession(const CarouselInvocation& invocation);
  ~CarouselSession();

  // Loads, takes the steps, draws; reports to standard output.
  std::optional<QXPlatform::Error> runScript();
  // Loads, then lets the user have it until the window is closed.
  std::optional<QXPlatform::Error> runWindow();
  // Loads, since there is nothing to open a window on.
  std::optional<QXPlatform::Error> runWithoutScreen();

 private:
  std::optional<QXPlatform::Error> load(const std::string& file);
  // Once.
  void reportMissingFont();
  std::optional<QXPlatform::Error> take(const CarouselStep& step);
  void wait(std::chrono::milliseconds time);
  void waitForImages();
  std::optional<QXPlatform::Error> draw();
  std::optional<QXPlatform::Error> drawPanel(std::size_t index, const std::filesystem::path& file);
  bool settleAt(std::size_t index);
  bool goTo(std::size_t index);
  std::size_t position() const;
  void report(std::string_view step);
  // Null while nothing is shown.
  QXExtensionSDK::CarouselViewController* screen() const;
  std::size_t panelCount() const;

  const CarouselInvocation invocation_;
  const std::shared_ptr<QXExtensionSDK::VTQXNotificationViewController> extension_;
  QXPlatform::ContentExtensionHost host_;
  bool isMissingFontReported_ = false;
};

}  // namespace qx
