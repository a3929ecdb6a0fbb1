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
  struct Handlers {
    std::function<bool(std::string_view line)> take;        // returns whether the line is safe
    std::function<void(const std::string& reason)> refuse;  // a line that is no push, and has not been kept
    std::function<void(const std::string& reason)> failed;  // no more can be read; the end follows
    std::function<void()> ended;                            // all are safe
  };
  LineSource(EventLoop& loop, int descriptor, Handlers handlers);

 private:
  void read();
  // Takes what lies in the buffer; false when a line could not be taken.
  bool takeLines();
  bool takeLine(std::string_view line);
  void refuseLong();
  void goOn();

  const int descriptor_;
  const Handlers handlers_;
  std::string unread_;
  bool atEnd_ = false;
  bool stuck_ = false;  // a line could not be taken
  bool tooLong_ = false;
  Watch watch_;
  Timer again_;
};

}  // namespace QXAgent
