#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "QXPlatform/foundation/Value.h"

namespace QXPlatform {

// A directory with an Info.plist. Immutable; any thread.
class Bundle {
 public:
  // The host's bundle: the directory named by $QX_BUNDLE, else the executable's own. Read once per process.
  static const Bundle& main();

  // A missing or unreadable Info.plist (XML or binary) gives an empty information dictionary.
  explicit Bundle(const std::filesystem::path& directory);

  const std::filesystem::path& directory() const { return directory_; }
  const Dictionary& infoDictionary() const { return info_; }
  // A null value when there is none.
  const Value& objectForInfoDictionaryKey(std::string_view key) const { return info_[key]; }
  // CFBundleIdentifier, when it is text.
  std::optional<std::string> bundleIdentifier() const;

 private:
  std::filesystem::path directory_;
  Dictionary info_;
};

}  // namespace QXPlatform
