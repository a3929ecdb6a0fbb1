#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

namespace QXPlatform {

// Enumerations that are carried as raw values. One function beside the enumeration lists its cases:
//
//   enum class Flag : int { off = 0, on = 1 };  // raw value: the case's number
//   constexpr auto rawValues(QXPlatform::RawValuesOf<Flag>) { return std::to_array({Flag::off, Flag::on}); }
//
//   enum class Size { small, large };  // raw value: text
//   constexpr auto rawValues(QXPlatform::RawValuesOf<Size>) {
//     return std::to_array<QXPlatform::RawCase<Size>>({{Size::small, "S"}, {Size::large, "L"}});
//   }
template <typename Enumeration>
struct RawValuesOf {};

template <typename Enumeration>
using RawCase = std::pair<Enumeration, std::string_view>;

// The name that a table gives to a case; empty when it gives none.
template <typename Enumeration, std::size_t size>
constexpr std::string_view nameIn(const std::array<RawCase<Enumeration>, size>& names, Enumeration value) {
  for (const auto& [known, name] : names) {
    if (known == value) return name;
  }
  return {};
}

template <typename T>
concept RawRepresentable = std::is_enum_v<T> && requires {
  rawValues(RawValuesOf<T>());
};

// Is the raw value text, or else a number?
template <RawRepresentable T>
inline constexpr bool kHasTextRawValues =
    std::same_as<typename decltype(rawValues(RawValuesOf<T>()))::value_type, RawCase<T>>;

template <RawRepresentable T>
constexpr auto rawValue(T value) {
  if constexpr (kHasTextRawValues<T>) {
    return nameIn(rawValues(RawValuesOf<T>()), value);
  } else {
    return static_cast<std::int64_t>(value);
  }
}

// Nothing for a raw value that no case has.
template <RawRepresentable T>
constexpr std::optional<T> fromRawValue(
    std::conditional_t<kHasTextRawValues<T>, std::string_view, std::int64_t> raw) {
  for (const auto& known : rawValues(RawValuesOf<T>())) {
    if constexpr (kHasTextRawValues<T>) {
      if (known.second == raw) return known.first;
    } else {
      if (static_cast<std::int64_t>(known) == raw) return known;
    }
  }
  return std::nullopt;
}

}  // namespace QXPlatform
