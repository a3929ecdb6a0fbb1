#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace QXAgent {

inline constexpr std::size_t kTagSize = 16;

// What the one record of a message is encrypted with, by AES-128-GCM.
struct ContentKeys {
  std::string key;    // 16 bytes
  std::string nonce;  // 12 bytes
};

// The record, with its tag at the end.
std::string encryptRecord(const ContentKeys& keys, std::string_view text);

// Nothing for a record of other keys, or a changed one. REQUIRES: record.size() >= kTagSize
std::optional<std::string> decryptRecord(const ContentKeys& keys, std::string_view record);

}  // namespace QXAgent
