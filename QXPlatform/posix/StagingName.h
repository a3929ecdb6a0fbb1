#pragma once

namespace QXPlatform {

// Of the file that a writer makes and locks before it reads or writes anything. One name serves a whole
// directory. What bears it without being locked was left by a writer that was killed, or has no business
// there: it goes.
inline constexpr const char* kStagingName = ".coordinated-write";

}  // namespace QXPlatform
