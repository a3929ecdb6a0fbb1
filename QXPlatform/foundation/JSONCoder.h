#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/DecodingError.h"
#include "QXPlatform/foundation/JSONText.h"
#include "QXPlatform/foundation/RawValues.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"

// The machinery of JSONCoding.h: for every type that can be a member, how it is read from a Value and how it
// is written. Both answer false with the reasons; on failure the target holds something unspecified.

namespace QXPlatform {

// A member of a record and its key, a literal.
template <typename Record, typename Member>
struct JSONField {
  std::string_view key;
  Member Record::*member;
};

// Never defined: a constant expression that comes to it does not compile. A throw would do the same, but not
// for hosts that are built without exceptions.
void keyNeedsEscapes();

// `key`: plain ASCII, so that it needs no escapes.
template <typename Record, typename Member>
consteval JSONField<Record, Member> jsonField(std::string_view key, Member Record::*member) {
  for (const char character : key) {
    if (character < 0x20 || character == '"' || character == '\\') keyNeedsEscapes();
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
concept JSONSelfDecoding = requires(const Value& value, T& out, DecodingErrors& errors) {
  { T::decodeJSON(value, out, errors) } -> std::same_as<bool>;
};

template <typename T>
struct JSONCoder;

namespace detail {

// "expected `expected`, found ..."; always false.
bool failDecoding(std::string_view expected, const Value& found, DecodingErrors& errors);
bool failMissing(DecodingErrors& errors);
bool decodeInteger(const Value& value, std::int64_t& out, DecodingErrors& errors);
bool failOutOfRange(DecodingErrors& errors);

// "not one of S, M, L"; always false.
template <RawRepresentable T>
[[gnu::noinline, gnu::cold]] bool failUnknownRawValue(DecodingErrors& errors) {
  std::string message = "not one of";
  std::string_view separator = " ";
  for (const auto& known : rawValues(RawValuesOf<T>())) {
    message += std::exchange(separator, ", ");
    if constexpr (kHasTextRawValues<T>) {
      message += known.second;
    } else {
      message += std::to_string(rawValue(known));
    }
  }
  return errors.add(std::move(message));
}

template <typename Member>
inline constexpr bool kIsOptional = false;
template <typename Member>
inline constexpr bool kIsOptional<std::optional<Member>> = true;

}  // namespace detail

template <>
struct JSONCoder<bool> {
  static bool decode(const Value& value, bool& out, DecodingErrors& errors);
  static bool encode(std::string& out, bool value, JSONFault&) {
    out += value ? "true" : "false";
    return true;
  }
};

template <std::integral T>
struct JSONCoder<T> {
  static bool decode(const Value& value, T& out, DecodingErrors& errors) {
    std::int64_t integer = 0;
    if (!detail::decodeInteger(value, integer, errors)) return false;
    if (!std::in_range<T>(integer)) return detail::failOutOfRange(errors);
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
  static bool decode(const Value& value, double& out, DecodingErrors& errors);
  static bool encode(std::string& out, double value, JSONFault& fault) {
    return appendJSONNumber(out, value, fault);
  }
};

template <>
struct JSONCoder<std::string> {
  static bool decode(const Value& value, std::string& out, DecodingErrors& errors);
  static bool encode(std::string& out, const std::string& value, JSONFault& fault) {
    return appendJSONText(out, value, fault);
  }
};

template <>
struct JSONCoder<Value> {
  static bool decode(const Value& value, Value& out, DecodingErrors&) {
    out = value;
    return true;
  }
  static bool encode(std::string& out, const Value& value, JSONFault& fault) {
    return appendJSONValue(out, value, fault);
  }
};

template <>
struct JSONCoder<Dictionary> {
  static bool decode(const Value& value, Dictionary& out, DecodingErrors& errors);
  static bool encode(std::string& out, const Dictionary& value, JSONFault& fault) {
    return appendJSONValue(out, value, fault);
  }
};

template <RawRepresentable T>
struct JSONCoder<T> {
  using Raw = std::conditional_t<kHasTextRawValues<T>, std::string, std::int64_t>;

  static bool decode(const Value& value, T& out, DecodingErrors& errors) {
    Raw raw{};
    if (!JSONCoder<Raw>::decode(value, raw, errors)) return false;
    const std::optional<T> known = fromRawValue<T>(raw);
    if (!known) return detail::failUnknownRawValue<T>(errors);
    out = *known;
    return true;
  }
  static bool encode(std::string& out, T value, JSONFault& fault) {
    return JSONCoder<Raw>::encode(out, Raw(rawValue(value)), fault);
  }
};

template <typename T>
struct JSONCoder<std::optional<T>> {
  static bool decode(const Value& value, std::optional<T>& out, DecodingErrors& errors) {
    if (value.isNull()) {
      out.reset();
      return true;
    }
    out = JSONRecordAccess::make<T>();
    return JSONCoder<T>::decode(value, *out, errors);
  }
  static bool encode(std::string& out, const std::optional<T>& value, JSONFault& fault) {
    if (value) return JSONCoder<T>::encode(out, *value, fault);
    out += "null";
    return true;
  }
};

template <typename T>
struct JSONCoder<std::vector<T>> {
  static bool decode(const Value& value, std::vector<T>& out, DecodingErrors& errors) {
    if (!value.isArray()) return detail::failDecoding("an array", value, errors);
    const auto elements = value.elements();
    out.clear();
    out.reserve(elements.size());
    bool decoded = true;
    for (std::size_t i = 0; i < elements.size() && (decoded || errors.goOn()); ++i) {
      out.push_back(JSONRecordAccess::make<T>());
      const std::size_t before = errors.count();
      if (JSONCoder<T>::decode(elements[i], out.back(), errors)) continue;
      errors.prependIndex(before, i);
      decoded = false;
    }
    return decoded;
  }
  static bool encode(std::string& out, const std::vector<T>& value, JSONFault& fault) {
    out += '[';
    const std::size_t start = out.size();
    for (std::size_t i = 0; i < value.size(); ++i) {
      if (i == 1) reserveAlike(out, start, value.size());
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
  static bool decode(const Value& value, T& out, DecodingErrors& errors) {
    return T::decodeJSON(value, out, errors);
  }
  static bool encode(std::string& out, const T& value, JSONFault& fault) {
    return value.encodeJSON(out, fault);
  }
};

// Of a record that inherits its list, a form of its own comes first.
template <JSONRecord T>
requires(!JSONSelfDecoding<T>) struct JSONCoder<T> {
  static bool decode(const Value& value, T& out, DecodingErrors& errors) {
    if (!value.isDictionary()) return detail::failDecoding("an object", value, errors);
    bool decoded = true;
    const auto goesOn = [&](bool fieldDecoded) {
      decoded = decoded && fieldDecoded;
      return decoded || errors.goOn();
    };
    const auto decodeAll = [&](const auto&... field) {
      (goesOn(decodeField(value, out, field, errors)) && ...);
    };
    std::apply(decodeAll, kFields);
    return decoded;
  }

  static bool encode(std::string& out, const T& record, JSONFault& fault) {
    const std::size_t start = out.size();
    const auto encodeAll = [&]<std::size_t... Index>(std::index_sequence<Index...>) {
      return (encodeField<Index>(out, record, fault) && ...);
    };
    if (!encodeAll(std::make_index_sequence<std::tuple_size_v<decltype(kFields)>>())) return false;
    // In place of the first comma.
    if (out.size() == start) out += '{';
    out[start] = '{';
    out += '}';
    return true;
  }

 private:
  static constexpr auto kFields = JSONRecordAccess::fields<T>();
  // What stands before a member's value: ,"key":
  template <std::size_t Index>
  static constexpr auto kOpening = [] {
    constexpr std::string_view key = std::get<Index>(kFields).key;
    std::array<char, key.size() + 4> opening{',', '"'};
    std::ranges::copy(std::string_view("\":"), std::ranges::copy(key, opening.begin() + 2).out);
    return opening;
  }();

  template <typename Record, typename Member>
  static bool decodeField(const Value& value, T& out, const JSONField<Record, Member>& field,
                          DecodingErrors& errors) {
    const Value* found = value.find(field.key);
    const std::size_t before = errors.count();
    bool decoded = false;
    if (found != nullptr) {
      decoded = JSONCoder<Member>::decode(*found, out.*field.member, errors);
    } else if constexpr (detail::kIsOptional<Member>) {
      decoded = true;
      (out.*field.member).reset();
    } else {
      decoded = detail::failMissing(errors);
    }
    if (!decoded) errors.prependKey(before, field.key);
    return decoded;
  }

  template <std::size_t Index>
  static bool encodeField(std::string& out, const T& record, JSONFault& fault) {
    constexpr auto kField = std::get<Index>(kFields);
    const auto& member = record.*kField.member;
    using Member = std::remove_cvref_t<decltype(member)>;
    if constexpr (detail::kIsOptional<Member>) {
      if (!member) return true;
    }
    out.append(kOpening<Index>.data(), kOpening<Index>.size());
    if (JSONCoder<Member>::encode(out, member, fault)) return true;
    fault.where.prependKey(kField.key);
    return false;
  }
};

}  // namespace QXPlatform
