#pragma once

#include <functional>
#include <optional>
#include <string>

#include "agent/extensions/Program.h"
#include "agent/loop/EventLoop.h"

namespace QXAgent {

// A window of the app's content extension, which shows one notification.
class ContentWindow {
 public:
  enum class End {
    dismissed,
    tapped,  // the app is to be brought up
    failed,  // it showed nothing
  };

  // `ended` is called once, when the window has closed; it may end this object's life only later.
  ContentWindow(EventLoop& loop, StartedProgram started, std::function<void(End)> ended);
  ~ContentWindow();
  ContentWindow(const ContentWindow&) = delete;
  ContentWindow& operator=(const ContentWindow&) = delete;

  bool hasEnded() const { return hasEnded_; }

 private:
  // Whether there may be more at once.
  bool readSome();
  void read();
  void takeExit();
  void end();
  End judge() const;

  const StartedProgram started_;
  const std::function<void(End)> ended_;
  std::string output_;
  bool isAtEnd_ = false;
  bool hasEnded_ = false;
  Watch watch_;
  Watch exit_;
};

}  // namespace QXAgent
