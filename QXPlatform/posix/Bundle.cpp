#include "QXPlatform/foundation/Bundle.h"

#include <cstdlib>
#include <system_error>

#include "QXPlatform/files/FileContents.h"
#include "QXPlatform/foundation/Executable.h"
#include "QXPlatform/foundation/PropertyList.h"

namespace QXPlatform {

namespace {

std::filesystem::path mainDirectory() {
  std::error_code error;
  const char* named = std::getenv("QX_BUNDLE");
  if (named != nullptr && *named != '\0') return std::filesystem::absolute(named, error);
  return executablePath().parent_path();
}

Dictionary readInfo(const std::filesystem::path& directory) {
  std::error_code error;
  const auto file = std::filesystem::absolute(directory / "Info.plist", error);
  if (error) return {};
  const auto contents = readContents(URL::file(file.native()));
  const auto info = contents ? parsePropertyList(contents->view()) : std::nullopt;
  return info ? info->dictionary().value_or(Dictionary()) : Dictionary();
}

}  // namespace

const Bundle& Bundle::main() {
  static const Bundle bundle(mainDirectory());
  return bundle;
}

Bundle::Bundle(const std::filesystem::path& directory) : directory_(directory), info_(readInfo(directory)) {}

std::optional<std::string> Bundle::bundleIdentifier() const {
  const auto text = objectForInfoDictionaryKey("CFBundleIdentifier").string();
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

}  // namespace QXPlatform
