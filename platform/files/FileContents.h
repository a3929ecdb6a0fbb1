#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/foundation/Data.h"
#include "platform/foundation/URL.h"

namespace platform {

// Several times the largest record (300 receipts of full-sized pushes, some 3 MB); a larger file is not ours
// and would not fit an extension's memory.
inline constexpr std::size_t kMaxFileContents = std::size_t{16} << 20;

// The whole content of a regular file. Nothing when there is no such file, it cannot be read, is larger than
// kMaxFileContents, or is a symbolic link, directory, pipe, socket or device; never blocks on one of these.
// Any thread.
std::optional<Data> readContents(const URL& file);

// Replaces the content of a regular file, which is made (mode 0600) when it is not there. Neither atomic nor
// durable by itself: see FileCoordinator. False when it failed, the file then holding anything. Any thread.
bool writeContents(std::string_view bytes, const URL& file);

}  // namespace platform
