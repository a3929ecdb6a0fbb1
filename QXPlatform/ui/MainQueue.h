#pragma once

#include <functional>

namespace QXPlatform {

// To be called by the thread that has made the application object, at once: work that other threads dispatch
// while the application goes is then dropped in good order.
void beginMainQueue();

// Runs `work` on the thread of the user interface, after what it does now and in the order submitted. Any
// thread may call. Work that is still waiting when the application ends is dropped, as is later work: a
// completion that comes late finds nobody to call.
//
// The work may outlive whatever it was made for; let it capture a weak reference.
void dispatchMainAsync(std::function<void()> work);

}  // namespace QXPlatform
