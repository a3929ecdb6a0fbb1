#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "agent/loop/EventLoop.h"

namespace QXAgent {

// Pushes on a descriptor, one a line. A line that cannot be taken is offered again, and none read meanwhile.
class LineSource {
 public:
  // `take` returns whether the line is safe; `ended` is called when all are.
  LineSource(EventLoop& loop, int descriptor, std::function<bool(std::string_view line)> take,
             std::function<void()> ended);

 private:
  void read();
  // Takes what lies in the buffer; false when a line could not be taken.
  bool takeLines();
  bool takeLine(std::string_view line);
  void goOn();

  const int descriptor_;
  const std::function<bool(std::string_view)> take_;
  const std::function<void()> ended_;
  std::string unread_;
  bool atEnd_ = false;
  bool stuck_ = false;  // a line could not be taken
  bool tooLong_ = false;
  Watch watch_;
  Timer again_;
};

}  // namespace QXAgent
