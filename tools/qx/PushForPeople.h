#pragma once

#include <string>

#include "QXPlatform/notifications/PushLines.h"

namespace qx {

// What a device shows of a push, over some lines, as people read it on a terminal.
std::string pushForPeople(const QXPlatform::AnsweredPush& answered, bool inColour);

// How many receipts of each module wait for their back end, a line a module; empty when the host has set none
// up.
std::string receiptsForPeople();

}  // namespace qx
