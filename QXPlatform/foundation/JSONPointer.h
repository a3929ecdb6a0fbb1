#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace QXPlatform {

// A place in a JSON text, such as /it/0/md. It is built from the inside out, level by level, while an error
// travels up, so that it costs nothing as long as there is none.
class JSONPointer {
 public:
  void prependKey(std::string_view key);
  void prependIndex(std::size_t index);
  // `prefix`: a pointer's text.
  void prependText(std::string_view prefix) { text_.insert(0, prefix); }

  // Empty for the whole text.
  const std::string& text() const { return text_; }

  friend bool operator==(const JSONPointer&, const JSONPointer&) = default;

 private:
  std::string text_;
};

}  // namespace QXPlatform
