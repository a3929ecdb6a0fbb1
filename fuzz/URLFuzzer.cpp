#include <cstddef>
#include <cstdint>
#include <string>

#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/URL.h"

namespace {

using QXPlatform::fatalError;
using QXPlatform::URL;

void checkReference(std::string_view input) {
  const auto url = URL::parse(input);
  if (!url) return;
  if (url->absoluteString() != input) fatalError("The text changed");
  if (url->path().size() + url->host().size() + url->scheme().size() > input.size())
    fatalError("Parts overlap");
  if (url->lastPathComponent().size() > url->path().size()) fatalError("A segment longer than its path");
  const URL joined = url->appendingPathComponent(input);
  if (!URL::parse(joined.absoluteString())) fatalError("Joined to what is no URL");
  if (joined.scheme() != url->scheme() || joined.host() != url->host()) fatalError("Joining led elsewhere");
}

void checkFilePath(const std::string& path) {
  const URL url = URL::file(path);
  if (!URL::parse(url.absoluteString())) fatalError("A file URL that is none");
  if (!url.isFileURL() || url.filePath() != path) fatalError("The path changed");
}

}  // namespace

// Well-formed references stay as they are, and what is made of them is well formed and leads to the same
// host.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  checkReference(input);
  checkFilePath(std::string("/").append(input));
  return 0;
}
