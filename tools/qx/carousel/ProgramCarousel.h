#pragma once

#include <QProcess>
#include <optional>
#include <string>

#include "tools/qx/carousel/PlayedCarousel.h"

namespace qx {

// A host's own content-extension program, which takes the commands on its standard input. What else it prints
// goes to this process's standard error. REQUIRES: an application object.
class ProgramCarousel final : public PlayedCarousel {
 public:
  explicit ProgramCarousel(StepHandler stepTaken) : stepTaken_(std::move(stepTaken)) {}
  // Ends the program's input and waits for it to end.
  ~ProgramCarousel() override;

  // An error when it cannot be.
  std::optional<QXPlatform::Error> start(const std::string& program, CarouselPlace place);

  QXPlatform::Result<QXPlatform::Dictionary> play(const QXPlatform::Dictionary& command) override;
  void runWindow() override;

 private:
  // Nothing while there is no whole answer; a line that is none is passed on.
  std::optional<QXPlatform::Dictionary> nextAnswer();
  void handleSteps();
  QXPlatform::Error whyItEnded() const;

  const StepHandler stepTaken_;
  QProcess process_;
  bool isAsking_ = false;  // which takes the answers itself
};

}  // namespace qx
