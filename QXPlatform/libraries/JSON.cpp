#include <algorithm>
#include <array>
#include <boost/json/basic_parser_impl.hpp>
#include <charconv>
#include <cmath>
#include <string>
#include <vector>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/JSONTextError.h"
#include "QXPlatform/foundation/ValueArena.h"

namespace QXPlatform {

namespace {

using boost::json::error;
using boost::json::error_code;

// What basic_parser calls as it meets the parts of the text. Children wait on a stack until their container
// closes and takes them into the arena in one piece.
class TreeBuilder {
 public:
  static constexpr std::size_t max_object_size = static_cast<std::size_t>(-1);
  static constexpr std::size_t max_array_size = static_cast<std::size_t>(-1);
  static constexpr std::size_t max_key_size = static_cast<std::size_t>(-1);
  static constexpr std::size_t max_string_size = static_cast<std::size_t>(-1);

  // The tree of a carousel is nearly five times the size of its text.
  TreeBuilder(std::size_t textSize, std::size_t treeLimit) : arena_(textSize * 5), treeLimit_(treeLimit) {
    values_.reserve(kUsualBreadth);
    members_.reserve(kUsualBreadth);
  }

  // Whether it was stopped because the tree would be too large.
  bool overLimit() const { return overLimit_; }

  Value finish() && { return std::move(arena_).finish(values_.front()); }

  bool on_document_begin(error_code&) { return true; }
  bool on_document_end(error_code&) { return true; }

  bool on_array_begin(error_code&) { return open(false); }
  bool on_array_end(std::size_t count, error_code& failure) {
    if (!hasRoom(count * sizeof(ValueArena::RawValue))) return stop(failure);
    const auto first = values_.end() - static_cast<std::ptrdiff_t>(count);
    const auto array = arena_.array({first, values_.end()});
    values_.erase(first, values_.end());
    return close(array, failure);
  }

  bool on_object_begin(error_code&) { return open(true); }
  bool on_object_end(std::size_t count, error_code& failure) {
    if (!hasRoom(count * sizeof(ValueArena::RawEntry))) return stop(failure);
    const auto first = members_.end() - static_cast<std::ptrdiff_t>(count);
    const auto dictionary = arena_.dictionary({first, members_.end()});
    members_.erase(first, members_.end());
    return close(dictionary, failure);
  }

  bool on_key_part(std::string_view part, std::size_t, error_code&) { return keep(part); }
  bool on_key(std::string_view rest, std::size_t size, error_code& failure) {
    if (!hasRoom(size) || !canGrow(members_)) return stop(failure);
    members_.emplace_back().key = joined(rest);
    return true;
  }
  bool on_string_part(std::string_view part, std::size_t, error_code&) { return keep(part); }
  bool on_string(std::string_view rest, std::size_t size, error_code& failure) {
    if (!hasRoom(size)) return stop(failure);
    return place([&] { return arena_.string(joined(rest)); }, failure);
  }

  // Only a text that comes in several pieces has numbers in parts.
  static bool on_number_part(std::string_view, error_code&) { return true; }
  bool on_int64(std::int64_t value, std::string_view, error_code& failure) {
    return place([value] { return ValueArena::integer(value); }, failure);
  }
  bool on_uint64(std::uint64_t, std::string_view digits, error_code& failure) {
    return on_double(0, digits, failure);
  }
  // The library's own conversion is off in the last place for many numbers of 17 digits.
  bool on_double(double approximate, std::string_view digits, error_code& failure) {
    double exact = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), exact);
    const bool tooSmall = read.ec == std::errc::result_out_of_range && std::abs(approximate) < 1;
    if (tooSmall) {
      exact = std::copysign(0.0, approximate);
    } else if (read.ec != std::errc() || !std::isfinite(exact)) {
      failure = error::exponent_overflow;
      return false;
    }
    return place([exact] { return ValueArena::number(exact); }, failure);
  }

  bool on_bool(bool value, error_code& failure) {
    return place([value] { return ValueArena::boolean(value); }, failure);
  }
  bool on_null(error_code& failure) { return place(&ValueArena::null, failure); }

  static bool on_comment_part(std::string_view, error_code&) { return true; }
  static bool on_comment(std::string_view, error_code&) { return true; }

 private:
  // Of the memory that the allocator has at hand for each thread.
  static constexpr std::size_t kUsualBreadth = 24;

  bool open(bool object) {
    insideObject_[++depth_] = object;
    return true;
  }
  bool close(const ValueArena::RawValue& container, error_code& failure) {
    --depth_;
    return place([&container] { return container; }, failure);
  }
  // `make` fills the place where the value stays: one that is copied as soon as its parts are written keeps
  // the processor waiting for them.
  template <typename Make>
  bool place(const Make& make, error_code& failure) {
    if (!insideObject_[depth_]) {
      if (!canGrow(values_)) return stop(failure);
      values_.emplace_back();
    }
    auto* const slot = insideObject_[depth_] ? &members_.back().value : &values_.back();
    new (slot) ValueArena::RawValue(make());
    return true;
  }

  std::size_t used() const {
    return arena_.size() + values_.capacity() * sizeof(values_[0]) +
           members_.capacity() * sizeof(members_[0]);
  }
  bool hasRoom(std::size_t size) const { return arena_.fits(size) || used() + size <= treeLimit_; }
  // A full stack moves to one of twice its size.
  template <typename Element>
  bool canGrow(const std::vector<Element>& stack) const {
    return stack.size() < stack.capacity() || hasRoom(2 * stack.capacity() * sizeof(Element));
  }
  bool stop(error_code& failure) {
    overLimit_ = true;
    failure = error::array_too_large;
    return false;
  }

  bool keep(std::string_view part) {
    pending_ += part;
    return true;
  }
  std::string_view joined(std::string_view rest) {
    if (pending_.empty()) return arena_.store(rest);
    const std::string_view text = arena_.store(pending_, rest);
    pending_.clear();
    return text;
  }

  ValueArena arena_;
  std::vector<ValueArena::RawValue> values_;
  std::vector<ValueArena::RawEntry> members_;
  std::string pending_;
  const std::size_t treeLimit_;
  std::array<bool, kJSONWritingDepthLimit + 1> insideObject_{};
  std::size_t depth_ = 0;
  bool overLimit_ = false;
};

boost::json::parse_options strictOptions(int depth) {
  boost::json::parse_options options;
  options.max_depth = static_cast<std::size_t>(depth);
  return options;
}

// "line 3, column 14", counted in characters; the column alone in a text of one line.
std::string describePosition(std::string_view text, std::size_t position) {
  const std::string_view before = text.substr(0, position);
  const std::string_view line = before.substr(before.rfind('\n') + 1);
  const auto isLead = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; };
  std::string column = "column " + std::to_string(std::ranges::count_if(line, isLead) + 1);
  if (text.find('\n') == std::string_view::npos) return column;
  return "line " + std::to_string(std::ranges::count(before, '\n') + 1) + ", " + column;
}

using Parser = boost::json::basic_parser<TreeBuilder>;

std::optional<JSONTextError> parse(Parser& parser, std::string_view text, JSONLimits limits) {
  error_code failure;
  const std::size_t used = parser.write_some(false, text.data(), text.size(), failure);
  if (!failure && used < text.size()) failure = error::extra_data;
  if (parser.handler().overLimit()) {
    return JSONTextError{"the JSON text needs more than " + std::to_string(limits.treeBytes >> 20) + " MB",
                         std::string::npos};
  }
  if (failure) return JSONTextError{failure.message(), used};
  return std::nullopt;
}

}  // namespace

Result<Value> parseJSON(std::string_view text, JSONLimits limits) {
  Parser parser(strictOptions(limits.depth), text.size(), limits.treeBytes);
  const auto failure = parse(parser, text, limits);
  if (!failure) return std::move(parser.handler()).finish();
  if (failure->offset == std::string::npos) return Error{failure->reason};
  return Error{failure->reason + " at " + describePosition(text, failure->offset)};
}

std::optional<JSONTextError> findJSONTextError(std::string_view text) {
  const JSONLimits limits;
  Parser parser(strictOptions(limits.depth), text.size(), limits.treeBytes);
  auto failure = parse(parser, text, limits);
  if (failure) failure->offset = std::min(failure->offset, text.size());
  return failure;
}

}  // namespace QXPlatform
