#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "tools/qx/CarouselOptions.h"
#include "tools/qx/CarouselSteps.h"
#include "tools/qx/carousel/PlayedCarousel.h"

namespace qx {

// One carousel that is looked at. Each run answers why it was refused, or nothing.
// REQUIRES: an application object.
class CarouselSession {
 public:
  CarouselSession(const CarouselInvocation& invocation, PlayedCarousel& carousel);

  // Loads, takes the steps, draws; reports to standard output.
  std::optional<QXPlatform::Error> runScript();
  // Loads, then lets the user have it until the window is closed.
  std::optional<QXPlatform::Error> runWindow();
  // The same for ever newer versions of the file, with what is found in each under the carousel.
  std::optional<QXPlatform::Error> runWatch();
  // Loads, since there is nothing to open a window on.
  std::optional<QXPlatform::Error> runWithoutScreen();

 private:
  using Refusal = std::optional<QXPlatform::Error>;

  Refusal look();
  const std::string& file() const { return invocation_.carousel.files.front(); }
  Refusal load(std::string_view step, const std::string& file);
  void follow(const std::optional<std::string>& text);
  Refusal take(const CarouselStep& step);
  // Has the command carried out, and keeps how the carousel stands then.
  Refusal play(const QXPlatform::Dictionary& command);
  Refusal draw();
  Refusal drawPanels();
  // What the options have the images judged by.
  Refusal judgeImages();
  Refusal waitForImages();
  Refusal drawTo(std::size_t index, const std::filesystem::path& file);
  // Once.
  void reportMissingFont();
  void report() const;
  bool isShown() const;
  std::size_t panelCount() const;

  const CarouselInvocation& invocation_;
  PlayedCarousel& carousel_;
  QXPlatform::Dictionary state_;
  bool hasLoaded_ = false;
  bool isMissingFontReported_ = false;
};

}  // namespace qx
