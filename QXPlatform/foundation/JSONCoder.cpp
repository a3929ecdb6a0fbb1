#include "QXPlatform/foundation/JSONCoder.h"

#include <array>
#include <cmath>

namespace QXPlatform {

namespace {

constexpr auto kKindNames = std::to_array<RawCase<Value::Kind>>({
    {Value::Kind::null, "null"},
    {Value::Kind::boolean, "a boolean"},
    {Value::Kind::integer, "an integer"},
    {Value::Kind::number, "a fraction"},
    {Value::Kind::string, "text"},
    {Value::Kind::date, "a date"},
    {Value::Kind::data, "bytes"},
    {Value::Kind::array, "an array"},
    {Value::Kind::dictionary, "an object"},
});

}  // namespace

namespace detail {

bool failDecoding(std::string_view expected, const Value& found, DecodingErrors& errors) {
  return errors.add(
      std::string("expected ").append(expected).append(", found ").append(nameIn(kKindNames, found.kind())));
}

bool failMissing(DecodingErrors& errors) {
  return errors.add("missing");
}

bool failOutOfRange(DecodingErrors& errors) {
  return errors.add("expected an integer, found one out of range");
}

bool decodeInteger(const Value& value, std::int64_t& out, DecodingErrors& errors) {
  if (const auto integer = value.integer()) {
    out = *integer;
    return true;
  }
  const auto number = value.number();
  if (!number || std::trunc(*number) != *number) return failDecoding("an integer", value, errors);
  // Both bounds are exact as doubles.
  if (*number < -0x1p63 || *number >= 0x1p63) return failOutOfRange(errors);
  out = static_cast<std::int64_t>(*number);
  return true;
}

}  // namespace detail

bool JSONCoder<bool>::decode(const Value& value, bool& out, DecodingErrors& errors) {
  const auto boolean = value.boolean();
  if (!boolean) return detail::failDecoding("a boolean", value, errors);
  out = *boolean;
  return true;
}

bool JSONCoder<double>::decode(const Value& value, double& out, DecodingErrors& errors) {
  if (const auto number = value.number()) {
    out = *number;
  } else if (const auto integer = value.integer()) {
    out = static_cast<double>(*integer);
  } else {
    return detail::failDecoding("a number", value, errors);
  }
  return true;
}

bool JSONCoder<std::string>::decode(const Value& value, std::string& out, DecodingErrors& errors) {
  const auto text = value.string();
  if (!text) return detail::failDecoding("text", value, errors);
  out = *text;
  return true;
}

bool JSONCoder<Dictionary>::decode(const Value& value, Dictionary& out, DecodingErrors& errors) {
  auto dictionary = value.dictionary();
  if (!dictionary) return detail::failDecoding("an object", value, errors);
  out = *std::move(dictionary);
  return true;
}

}  // namespace QXPlatform
