#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace QXPlatform {

// An owned byte buffer. A type of its own so that bytes and text are never mistaken for each other; it
// wraps a string so that text becomes bytes, and bytes text, by a move.
class Data {
 public:
  Data() = default;
  explicit Data(std::string bytes) : bytes_(std::move(bytes)) {}

  std::size_t size() const { return bytes_.size(); }
  bool empty() const { return bytes_.empty(); }
  std::string_view view() const { return bytes_; }
  std::span<const std::byte> bytes() const { return std::as_bytes(std::span(bytes_)); }
  std::string take() && { return std::move(bytes_); }

  // "12 bytes"
  std::string description() const { return std::to_string(bytes_.size()) + " bytes"; }

  friend bool operator==(const Data&, const Data&) = default;

 private:
  std::string bytes_;
};

}  // namespace QXPlatform
