#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/files/FileContents.h"
#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/URL.h"

namespace AppGroupSDK {

// Puts whole files into place and reads them back. Blocks until it is done; any thread.
class DataStoreSaving {
 public:
  // What a change finds in the file: bytes, or nothing when there is no file.
  using Found = std::optional<QXPlatform::Data>;
  // Gives the bytes to write; nothing to let the update fail. `found` is null when the file is what it was.
  using Change = std::function<std::optional<std::string>(const Found* found)>;

  virtual ~DataStoreSaving() = default;
  virtual bool write(std::string_view bytes, const QXPlatform::URL& destination) const = 0;
  // Nothing when the file is missing or cannot be read.
  virtual std::optional<QXPlatform::Data> read(const QXPlatform::URL& source) const = 0;
  // The same of another file in its directory when there is nothing of this one, in the same access.
  virtual std::optional<QXPlatform::Data> read(const QXPlatform::URL& source,
                                               const QXPlatform::URL& otherwise) const = 0;
  // Reads, changes and writes while no other writer does. `version` is what the caller knows of the file
  // already, if anything: what it has not changed from is not read again. Afterwards it is what was written.
  // False when nothing was: also, without asking for a change, when the file is there but cannot be read.
  virtual bool update(const QXPlatform::URL& file, std::optional<QXPlatform::FileVersion>& version,
                      const Change& change) const = 0;
};

}  // namespace AppGroupSDK
