#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "QXPlatform/foundation/JSONPointer.h"

namespace QXPlatform {

// Why a value is not the record that was asked for, and where. Holds no text of the value itself.
struct DecodingError {
  JSONPointer path;
  std::string message;  // "missing", "expected text, found null"

  // "/_rf/vt/it/0/md/ul: missing"
  std::string description() const { return path.text().empty() ? message : path.text() + ": " + message; }

  friend bool operator==(const DecodingError&, const DecodingError&) = default;
};

// Gathers what is wrong with a value while it is decoded: the first thing, or everything.
class DecodingErrors {
 public:
  enum class Extent { first, all };

  explicit DecodingErrors(Extent extent = Extent::first) : extent_(extent) {}

  // Whether decoding goes on after an error, for the sake of the next one.
  bool goOn() const { return extent_ == Extent::all; }
  std::size_t count() const { return errors_.size(); }

  // At the value itself; always false, so that a decoder can return it.
  bool add(std::string message);
  // The errors from the given one on were met in a member, or in an element.
  void prependKey(std::size_t from, std::string_view key);
  void prependIndex(std::size_t from, std::size_t index);

  // With a prefix for every path.
  std::vector<DecodingError> take(std::string_view prefix) &&;

 private:
  const Extent extent_;
  std::vector<DecodingError> errors_;
};

}  // namespace QXPlatform
