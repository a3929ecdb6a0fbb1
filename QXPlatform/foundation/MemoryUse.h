#pragma once

namespace QXPlatform {

// Says that this program is to stay small and even in size, however long it runs and however many threads
// work at the same time. They share so many pools of memory; threads that take much of one hold each other
// up. To be called early, while there is a single thread; a library leaves it to its program.
void keepMemoryUseEven(int pools = 1);

// Gives memory that is free back to the system. Takes about a millisecond. Any thread.
void giveBackFreeMemory();

}  // namespace QXPlatform
