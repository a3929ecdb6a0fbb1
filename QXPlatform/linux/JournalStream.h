#pragma once

#include <string_view>

namespace QXPlatform {

// Whether an open file is the stream to the journal that `journalStream`, the value of $JOURNAL_STREAM, names
// as "device:inode".
bool isJournalStream(std::string_view journalStream, int descriptor);

}  // namespace QXPlatform
