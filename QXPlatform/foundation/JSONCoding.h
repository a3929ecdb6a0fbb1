#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/DecodingError.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/JSONCoder.h"
#include "QXPlatform/foundation/Result.h"

namespace QXPlatform {

// Records to and from JSON. A record lists its members once, for both directions:
//
//   class Receipt {
//     ...
//    private:
//     friend QXPlatform::JSONRecordAccess;  // where jsonFields() or the constructor without arguments is
//     private static constexpr auto jsonFields() {
//       return QXPlatform::jsonFields(QXPlatform::jsonField("uuid", &Receipt::uuid_),
//                                   QXPlatform::jsonField("requestId", &Receipt::requestId_));
//     }
//     std::string uuid_;
//     std::optional<std::string> requestId_;
//   };
//
// A member may be a bool, an integer, a double, a std::string, a Value (any JSON), a Dictionary (any object),
// an enumeration with rawValues(), a record, a std::vector of these, or a std::optional of these, which
// absent or null reads as empty and empty is not written. All others are required. A whole number is an
// integer however it is written, and every integer is a double; nothing else is converted. Keys not listed
// are ignored.
//
// A type with a form of its own declares
//   static bool decodeJSON(const QXPlatform::Value& value, T& out, QXPlatform::DecodingErrors& errors);
//   bool encodeJSON(std::string& out, QXPlatform::JSONFault& fault) const;  // where it is ever written
// Paths of its errors start at its own value.
//
// All functions may be called on any thread.

// `prefix`: where `value` itself stands, to begin the path of an error with.
template <typename T>
Result<T, DecodingError> decodeValue(const Value& value, std::string_view prefix = {}) {
  T decoded = JSONRecordAccess::make<T>();
  DecodingErrors errors;
  if (JSONCoder<T>::decode(value, decoded, errors)) return decoded;
  return std::move(errors).take(prefix).front();
}

// All that keeps a value from being a T, in the order of T's members; empty when nothing does.
template <typename T>
std::vector<DecodingError> decodingErrors(const Value& value, std::string_view prefix = {}) {
  T decoded = JSONRecordAccess::make<T>();
  DecodingErrors errors(DecodingErrors::Extent::all);
  JSONCoder<T>::decode(value, decoded, errors);
  return std::move(errors).take(prefix);
}

template <typename T>
Result<T, DecodingError> decodeJSON(std::string_view text, std::string_view prefix = {}) {
  const Result<Value> value = parseJSON(text);
  if (value) return decodeValue<T>(*value, prefix);
  DecodingError error{{}, "not JSON: " + value.error().message};
  error.path.prependText(prefix);
  return error;
}

// Compact; the members in the order listed. A double that is not finite, or text that is not UTF-8, is an
// error that says where.
template <typename T>
Result<std::string> encodeJSON(const T& record) {
  std::string text;
  JSONFault fault;
  if (!JSONCoder<T>::encode(text, record, fault)) return Error{fault.description()};
  return text;
}

}  // namespace QXPlatform
