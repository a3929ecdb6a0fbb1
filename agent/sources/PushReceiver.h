#pragma once

#include <string_view>

namespace QXAgent {

// Where sources bring what has arrived.
class PushReceiver {
 public:
  virtual ~PushReceiver() = default;

  // Takes a push as JSON text. Once this has returned true it survives whatever happens, and the source may
  // acknowledge it. `key` tells a repetition, which is dropped; empty: it is none.
  virtual bool receive(std::string_view key, std::string_view text) = 0;
  // Counts what a source did not let in.
  virtual void refuse(std::string_view reason) = 0;
  // Notes what keeps a source from bringing anything.
  virtual void report(std::string_view problem) = 0;
  // The source has ended what it was about.
  virtual void rested() = 0;
};

}  // namespace QXAgent
