#include "QXPlatform/libraries/network/TrustStore.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "QXPlatform/foundation/ASCII.h"

namespace QXPlatform {
namespace {

std::string environmentOr(const char* name, const char* otherwise) {
  if (const char* value = std::getenv(name); value != nullptr && *value != '\0') return value;
  return otherwise == nullptr ? "" : otherwise;
}

// As the tools that rehash such a directory name the entries: 1a2b3c4d.0
bool isHashedName(std::string_view name) {
  return name.size() == 10 && name.ends_with(".0") && name.find_first_not_of(kHexDigits) == name.size() - 2;
}

bool isHashed(const std::string& directory) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    if (isHashedName(entry->path().filename().native())) return true;
  }
  return false;
}

}  // namespace

TrustStore::TrustStore() {
  const curl_version_info_data& library = *curl_version_info(CURLVERSION_NOW);
  directory_ = environmentOr("SSL_CERT_DIR", library.capath);
  file_ = environmentOr("SSL_CERT_FILE", library.cainfo);
  // The system's bundle repeats its directory; the directory is read a certificate at a time, the bundle as
  // a whole, which takes 20 ms and a megabyte.
  static const bool systemDirectoryServes = library.capath != nullptr && isHashed(library.capath);
  const bool systemBundle = library.cainfo != nullptr && file_ == library.cainfo;
  const bool systemDirectory = library.capath != nullptr && directory_ == library.capath;
  if (systemBundle && systemDirectory && systemDirectoryServes) file_.clear();
}

void TrustStore::applyTo(CURL* handle) const {
  curl_easy_setopt(handle, CURLOPT_CAPATH, directory_.empty() ? nullptr : directory_.c_str());
  curl_easy_setopt(handle, CURLOPT_CAINFO, file_.empty() ? nullptr : file_.c_str());
}

}  // namespace QXPlatform
