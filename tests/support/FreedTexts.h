#pragma once

#include <string>
#include <vector>

namespace support {

// Looks for texts in every object that the process takes off the heap while this lives. Works in programs
// that list FreedTexts.cpp among their sources; under a sanitizer nothing is found.
class FreedTexts {
 public:
  explicit FreedTexts(std::vector<std::string> texts);
  ~FreedTexts();
  FreedTexts(const FreedTexts&) = delete;
  FreedTexts& operator=(const FreedTexts&) = delete;

  static bool areFound();
  // One that was there, or nothing.
  static std::string found();

 private:
  const std::vector<std::string> texts_;
};

}  // namespace support
