#pragma once

#include <cstddef>
#include <string_view>
#include <thread>

namespace QXPlatform {

// Names that tools show threads by, in so far as the system has such. Of a longer name the end is shown.
inline constexpr std::size_t kLongestThreadName = 15;
using ThreadHandle = std::thread::native_handle_type;

ThreadHandle currentThread();
void setCurrentThreadName(std::string_view name);
// Several times as dear. REQUIRES: the thread has not ended.
void setThreadName(ThreadHandle thread, std::string_view name);

}  // namespace QXPlatform
