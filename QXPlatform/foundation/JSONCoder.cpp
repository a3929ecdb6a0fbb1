#include "QXPlatform/foundation/JSONCoder.h"

#include <cmath>

namespace QXPlatform {

namespace {

std::string_view kindName(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::null:
      return "null";
    case Value::Kind::boolean:
      return "a boolean";
    case Value::Kind::integer:
      return "an integer";
    case Value::Kind::number:
      return "a fraction";
    case Value::Kind::string:
      return "text";
    case Value::Kind::date:
      return "a date";
    case Value::Kind::data:
      return "bytes";
    case Value::Kind::array:
      return "an array";
    case Value::Kind::dictionary:
      return "an object";
  }
  return "something else";
}

}  // namespace

namespace detail {

bool failDecoding(std::string_view expected, const Value& found, DecodingError& error) {
  error.message = "expected ";
  error.message += expected;
  error.message += ", found ";
  error.message += kindName(found);
  return false;
}

bool failMissing(DecodingError& error) {
  error.message = "missing";
  return false;
}

bool failOutOfRange(DecodingError& error) {
  error.message = "expected an integer, found one out of range";
  return false;
}

bool decodeInteger(const Value& value, std::int64_t& out, DecodingError& error) {
  if (const auto integer = value.integer()) {
    out = *integer;
    return true;
  }
  const auto number = value.number();
  if (!number || std::trunc(*number) != *number) return failDecoding("an integer", value, error);
  // Both bounds are exact as doubles.
  if (*number < -0x1p63 || *number >= 0x1p63) return failOutOfRange(error);
  out = static_cast<std::int64_t>(*number);
  return true;
}

}  // namespace detail

bool JSONCoder<bool>::decode(const Value& value, bool& out, DecodingError& error) {
  const auto boolean = value.boolean();
  if (!boolean) return detail::failDecoding("a boolean", value, error);
  out = *boolean;
  return true;
}

bool JSONCoder<double>::decode(const Value& value, double& out, DecodingError& error) {
  if (const auto number = value.number()) {
    out = *number;
  } else if (const auto integer = value.integer()) {
    out = static_cast<double>(*integer);
  } else {
    return detail::failDecoding("a number", value, error);
  }
  return true;
}

bool JSONCoder<std::string>::decode(const Value& value, std::string& out, DecodingError& error) {
  const auto text = value.string();
  if (!text) return detail::failDecoding("text", value, error);
  out = *text;
  return true;
}

}  // namespace QXPlatform
