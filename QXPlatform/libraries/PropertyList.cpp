#include "QXPlatform/foundation/PropertyList.h"

#include <plist/plist.h>

#include <cstdlib>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "QXPlatform/foundation/BinaryPropertyList.h"
#include "QXPlatform/foundation/Handle.h"

namespace QXPlatform {

namespace {

constexpr std::size_t kMaxSize = 1'000'000;
constexpr PropertyListLimits kLimits{512, 20'000, kMaxSize};
constexpr double kSecondsFrom1970To2001 = 978'307'200;

using NodeHandle = Handle<std::remove_pointer_t<plist_t>, &plist_free>;
using PositionHandle = Handle<void, &std::free>;
using TextHandle = Handle<char, &std::free>;

// The library takes nodes apart recursively. How deep they nest shows only to a parser, but not deeper than
// there are opening tags.
bool opensFewContainers(std::string_view xml) {
  std::size_t tags = 0;
  for (const std::string_view tag : {"<array", "<dict"}) {
    for (auto at = xml.find(tag); at != std::string_view::npos; at = xml.find(tag, at + 1)) ++tags;
  }
  return tags <= kLimits.nodes / 2;
}

// The library ends the process for want of memory, so what it may need is asked for first, and given back. In
// a fraction of a second another thread may take it; that is as near as it gets.
void expectMemory(std::size_t bytes) {
  ::operator delete(::operator new(bytes));
}

NodeHandle readNodes(std::string_view bytes) {
  if (bytes.size() > kMaxSize) return nullptr;
  constexpr std::size_t kAtLeast = 250'000;
  expectMemory(kAtLeast + 64 * bytes.size());
  const auto size = static_cast<std::uint32_t>(bytes.size());
  plist_t root = nullptr;
  if (bytes.starts_with("bplist00")) {
    if (unfoldsWithin(bytes, kLimits)) plist_from_bin(bytes.data(), size, &root);
  } else if (opensFewContainers(bytes)) {
    plist_from_xml(bytes.data(), size, &root);
  }
  return NodeHandle(root);
}

std::optional<Value> convert(plist_t node, int depthLeft);

std::optional<Value> convertArray(plist_t node, int depthLeft) {
  std::vector<Value> elements;
  const std::uint32_t size = plist_array_get_size(node);
  plist_array_iter position = nullptr;
  plist_array_new_iter(node, &position);
  const PositionHandle positionOwner(position);
  for (std::uint32_t i = 0; i < size; ++i) {
    plist_t element = nullptr;
    plist_array_next_item(node, position, &element);
    auto value = convert(element, depthLeft);
    if (!value) return std::nullopt;
    elements.push_back(*std::move(value));
  }
  return Value(elements);
}

std::optional<Value> convertDictionary(plist_t node, int depthLeft) {
  std::vector<std::pair<std::string, Value>> entries;
  plist_dict_iter position = nullptr;
  plist_dict_new_iter(node, &position);
  const PositionHandle positionOwner(position);
  while (true) {
    char* key = nullptr;
    plist_t item = nullptr;
    plist_dict_next_item(node, position, &key, &item);
    const TextHandle keyOwner(key);
    if (key == nullptr || item == nullptr) return Value(Dictionary::fromEntries(entries));
    auto value = convert(item, depthLeft);
    if (!value) return std::nullopt;
    entries.emplace_back(key, *std::move(value));
  }
}

Value convertDate(plist_t node) {
  std::int32_t seconds = 0;
  std::int32_t microseconds = 0;
  plist_get_date_val(node, &seconds, &microseconds);
  return Date{kSecondsFrom1970To2001 + seconds + microseconds / 1e6};
}

std::optional<Value> convert(plist_t node, int depthLeft) {
  if (node == nullptr || depthLeft < 0) return std::nullopt;
  std::uint64_t integer = 0;
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t boolean = 0;
      plist_get_bool_val(node, &boolean);
      return Value(boolean != 0);
    }
    case PLIST_UINT:
      // Negative numbers come in two's complement.
      plist_get_uint_val(node, &integer);
      return Value(static_cast<std::int64_t>(integer));
    case PLIST_UID:
      plist_get_uid_val(node, &integer);
      return Value(static_cast<std::int64_t>(integer));
    case PLIST_REAL: {
      double number = 0;
      plist_get_real_val(node, &number);
      return Value(number);
    }
    case PLIST_STRING: {
      const char* text = plist_get_string_ptr(node, &integer);
      return Value(text == nullptr ? std::string_view() : std::string_view(text, integer));
    }
    case PLIST_DATA: {
      const char* bytes = plist_get_data_ptr(node, &integer);
      return Value(Data(bytes == nullptr ? std::string() : std::string(bytes, integer)));
    }
    case PLIST_DATE:
      return convertDate(node);
    case PLIST_ARRAY:
      return convertArray(node, depthLeft - 1);
    case PLIST_DICT:
      return convertDictionary(node, depthLeft - 1);
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<Value> parsePropertyList(std::string_view bytes) {
  return convert(readNodes(bytes).get(), kLimits.depth);
}

}  // namespace QXPlatform
