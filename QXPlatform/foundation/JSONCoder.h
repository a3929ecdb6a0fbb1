#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/DecodingError.h"
#include "QXPlatform/foundation/JSONText.h"
#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"

// The machinery of JSONCoding.h: for every type that can be a member, how it is read from a Value and how it
// is written. Both answer false with the reason; on failure the target holds something unspecified.

namespace QXPlatform {

template <typename Record, typename Member>
struct JSONField {
  std::string_view key;
  Member Record::*member;
};

// `key`: plain ASCII, so that it needs no escapes.
template <typename Record, typename Member>
consteval JSONField<Record, Member> jsonField(std::string_view key, Member Record::*member) {
  for (const char character : key) {
    if (character < 0x20 || character == '"' || character == '\\') throw "a key that needs escapes";
  }
  return {key, member};
}

template <typename... Fields>
consteval std::tuple<Fields...> jsonFields(Fields... fields) {
  return {fields...};
}

// The friend that a record with private parts names.
class JSONRecordAccess {
 public:
  template <typename T>
  static constexpr auto fields() -> decltype(T::jsonFields()) {
    return T::jsonFields();
  }
  template <typename T>
  static T make() {
    return T();
  }
};

template <typename T>
concept JSONRecord = requires {
  JSONRecordAccess::fields<T>();
};

template <typename T>
concept JSONSelfDecoding = requires(const Value& value) {
  { T::decodeJSON(value) } -> std::same_as<Result<T, DecodingError>>;
};

template <typename T>
struct JSONCoder;

namespace detail {

// "expected `expected`, found ..."; always false.
bool failDecoding(std::string_view expected, const Value& found, DecodingError& error);
bool failMissing(DecodingError& error);
bool decodeInteger(const Value& value, std::int64_t& out, DecodingError& error);
bool failOutOfRange(DecodingError& error);

// "not one of S, M, L"; always false.
template <RawRepresentable T>
[[gnu::noinline, gnu::cold]] bool failUnknownRawValue(DecodingError& error) {
  error.message = "not one of";
  std::string_view separator = " ";
  for (const auto& known : rawValues(RawValuesOf<T>())) {
    error.message += std::exchange(separator, ", ");
    if constexpr (kHasTextRawValues<T>) {
      error.message += known.second;
    } else {
      error.message += std::to_string(rawValue(known));
    }
  }
  return false;
}

template <typename Member>
inline constexpr bool kIsOptional = false;
template <typename Member>
inline constexpr bool kIsOptional<std::optional<Member>> = true;

}  // namespace detail

template <>
struct JSONCoder<bool> {
  static bool decode(const Value& value, bool& out, DecodingError& error);
  static bool encode(std::string& out, bool value, JSONFault&) {
    out += value ? "true" : "false";
    return true;
  }
};

template <std::integral T>
struct JSONCoder<T> {
  static bool decode(const Value& value, T& out, DecodingError& error) {
    std::int64_t integer = 0;
    if (!detail::decodeInteger(value, integer, error)) return false;
    if (!std::in_range<T>(integer)) return detail::failOutOfRange(error);
    out = static_cast<T>(integer);
    return true;
  }
  static bool encode(std::string& out, T value, JSONFault&) {
    static_assert(std::signed_integral<T> || sizeof(T) < sizeof(std::int64_t));
    appendJSONInteger(out, value);
    return true;
  }
};

template <>
struct JSONCoder<double> {
  static bool decode(const Value& value, double& out, DecodingError& error);
  static bool encode(std::string& out, double value, JSONFault& fault) {
    return appendJSONNumber(out, value, fault);
  }
};

template <>
struct JSONCoder<std::string> {
  static bool decode(const Value& value, std::string& out, DecodingError& error);
  static bool encode(std::string& out, const std::string& value, JSONFault& fault) {
    return appendJSONText(out, value, fault);
  }
};

template <>
struct JSONCoder<Value> {
  static bool decode(const Value& value, Value& out, DecodingError&) {
    out = value;
    return true;
  }
  static bool encode(std::string& out, const Value& value, JSONFault& fault) {
    return appendJSONValue(out, value, fault);
  }
};

template <RawRepresentable T>
struct JSONCoder<T> {
  using Raw = std::conditional_t<kHasTextRawValues<T>, std::string, std::int64_t>;

  static bool decode(const Value& value, T& out, DecodingError& error) {
    Raw raw{};
    if (!JSONCoder<Raw>::decode(value, raw, error)) return false;
    const std::optional<T> known = fromRawValue<T>(raw);
    if (!known) return detail::failUnknownRawValue<T>(error);
    out = *known;
    return true;
  }
  static bool encode(std::string& out, T value, JSONFault& fault) {
    return JSONCoder<Raw>::encode(out, Raw(rawValue(value)), fault);
  }
};

template <typename T>
struct JSONCoder<std::optional<T>> {
  static bool decode(const Value& value, std::optional<T>& out, DecodingError& error) {
    if (value.isNull()) {
      out.reset();
      return true;
    }
    out = JSONRecordAccess::make<T>();
    return JSONCoder<T>::decode(value, *out, error);
  }
  static bool encode(std::string& out, const std::optional<T>& value, JSONFault& fault) {
    if (value) return JSONCoder<T>::encode(out, *value, fault);
    out += "null";
    return true;
  }
};

template <typename T>
struct JSONCoder<std::vector<T>> {
  static bool decode(const Value& value, std::vector<T>& out, DecodingError& error) {
    if (!value.isArray()) return detail::failDecoding("an array", value, error);
    const auto elements = value.elements();
    out.clear();
    out.reserve(elements.size());
    for (const Value& element : elements) {
      out.push_back(JSONRecordAccess::make<T>());
      if (JSONCoder<T>::decode(element, out.back(), error)) continue;
      error.path.prependIndex(out.size() - 1);
      return false;
    }
    return true;
  }
  static bool encode(std::string& out, const std::vector<T>& value, JSONFault& fault) {
    out += '[';
    for (std::size_t i = 0; i < value.size(); ++i) {
      if (i != 0) out += ',';
      if (JSONCoder<T>::encode(out, value[i], fault)) continue;
      fault.where.prependIndex(i);
      return false;
    }
    out += ']';
    return true;
  }
};

template <JSONSelfDecoding T>
struct JSONCoder<T> {
  static bool decode(const Value& value, T& out, DecodingError& error) {
    auto decoded = T::decodeJSON(value);
    if (decoded) {
      out = *std::move(decoded);
      return true;
    }
    error = decoded.error();
    return false;
  }
  static bool encode(std::string& out, const T& value, JSONFault& fault) {
    return value.encodeJSON(out, fault);
  }
};

template <JSONRecord T>
struct JSONCoder<T> {
  static bool decode(const Value& value, T& out, DecodingError& error) {
    if (!value.isDictionary()) return detail::failDecoding("an object", value, error);
    const auto decodeAll = [&](const auto&... field) {
      return (decodeField(value, out, field, error) && ...);
    };
    return std::apply(decodeAll, kFields);
  }

  static bool encode(std::string& out, const T& record, JSONFault& fault) {
    out += '{';
    const auto encodeAll = [&](const auto&... field) {
      return (encodeField(out, record, field, fault) && ...);
    };
    if (!std::apply(encodeAll, kFields)) return false;
    if (out.back() == ',') out.pop_back();
    out += '}';
    return true;
  }

 private:
  static constexpr auto kFields = JSONRecordAccess::fields<T>();

  template <typename Record, typename Member>
  static bool decodeField(const Value& value, T& out, const JSONField<Record, Member>& field,
                          DecodingError& error) {
    const Value* found = value.find(field.key);
    bool decoded = false;
    if (found != nullptr) {
      decoded = JSONCoder<Member>::decode(*found, out.*field.member, error);
    } else if constexpr (detail::kIsOptional<Member>) {
      decoded = true;
      (out.*field.member).reset();
    } else {
      decoded = detail::failMissing(error);
    }
    if (!decoded) error.path.prependKey(field.key);
    return decoded;
  }

  // Leaves a comma behind.
  template <typename Record, typename Member>
  static bool encodeField(std::string& out, const T& record, const JSONField<Record, Member>& field,
                          JSONFault& fault) {
    const Member& member = record.*field.member;
    if constexpr (detail::kIsOptional<Member>) {
      if (!member) return true;
    }
    out += '"';
    out += field.key;
    out += "\":";
    if (!JSONCoder<Member>::encode(out, member, fault)) {
      fault.where.prependKey(field.key);
      return false;
    }
    out += ',';
    return true;
  }
};

}  // namespace QXPlatform
