#include "QXPlatform/foundation/Base64.h"

#include <array>
#include <cstdint>

namespace QXPlatform {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t kForeign = 0xFF000000U;

using Table = std::array<std::uint32_t, 256>;

// The bits that a character stands for, already in their place among the 24 of a group of four.
constexpr Table makeTable(unsigned shift) {
  Table table{};
  table.fill(kForeign);
  for (std::uint32_t i = 0; i < kAlphabet.size(); ++i) {
    table[static_cast<unsigned char>(kAlphabet[i])] = i << shift;
  }
  return table;
}

constexpr std::array<Table, 4> kTables{makeTable(18), makeTable(12), makeTable(6), makeTable(0)};

// The 24 bits of the first `count` characters of a group; missing ones count as zero.
template <std::size_t count>
std::uint32_t groupBits(const char* group) {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < count; ++i) bits |= kTables[i][static_cast<unsigned char>(group[i])];
  return bits;
}

std::size_t paddingLength(std::string_view text) {
  if (text.ends_with("==")) return 2;
  return text.ends_with('=') ? 1 : 0;
}

}  // namespace

std::optional<Data> decodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = paddingLength(text);
  std::string bytes(text.size() / 4 * 3, '\0');
  char* out = bytes.data();
  const std::size_t fullGroups = text.size() / 4 - (padding == 0 ? 0 : 1);
  std::uint32_t seen = 0;
  for (std::size_t i = 0; i < fullGroups; ++i, out += 3) {
    const std::uint32_t bits = groupBits<4>(text.data() + i * 4);
    seen |= bits;
    out[0] = static_cast<char>(bits >> 16U);
    out[1] = static_cast<char>(bits >> 8U);
    out[2] = static_cast<char>(bits);
  }
  if (padding != 0) {
    const char* const group = text.data() + fullGroups * 4;
    const std::uint32_t bits = padding == 1 ? groupBits<3>(group) : groupBits<2>(group);
    seen |= bits;
    out[0] = static_cast<char>(bits >> 16U);
    if (padding == 1) out[1] = static_cast<char>(bits >> 8U);
    bytes.resize(bytes.size() - padding);
  }
  if ((seen & kForeign) != 0) return std::nullopt;
  return Data(std::move(bytes));
}

std::string encodeBase64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto byteAt = [&](std::size_t place) {
      return place < bytes.size() ? static_cast<unsigned char>(bytes[place]) : 0U;
    };
    const std::uint32_t bits = byteAt(i) << 16U | byteAt(i + 1) << 8U | byteAt(i + 2);
    text += kAlphabet[bits >> 18U];
    text += kAlphabet[bits >> 12U & 0x3FU];
    text += i + 1 < bytes.size() ? kAlphabet[bits >> 6U & 0x3FU] : '=';
    text += i + 2 < bytes.size() ? kAlphabet[bits & 0x3FU] : '=';
  }
  return text;
}

}  // namespace QXPlatform
