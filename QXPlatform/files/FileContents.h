#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "QXPlatform/foundation/Data.h"
#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// Twice the largest record, a full list of receipts; a larger file is not ours and, read into a tree, would
// not fit an extension's memory.
inline constexpr std::size_t kMaxFileContents = std::size_t{4} << 20;

// The whole content of a regular file. Nothing when there is no such file, it cannot be read, is larger than
// kMaxFileContents, or is a symbolic link, directory, pipe, socket or device; never blocks on one of these. A
// passing want of descriptors or memory is waited out for up to half a second. Any thread.
std::optional<Data> readContents(const URL& file);

// Replaces the content of a regular file, which is made (mode 0600) when it is not there. Neither atomic nor
// durable by itself: see FileCoordinator. False when it failed, the file then holding anything. Any thread.
bool writeContents(std::string_view bytes, const URL& file);

}  // namespace QXPlatform
