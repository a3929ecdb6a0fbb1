#include "QXPlatform/foundation/MemoryUse.h"

#include <malloc.h>

namespace QXPlatform {

// The allocator would keep eight pools a processor, each with holes of its own, and let them grow for tens of
// thousands of notifications. One is not slower: most blocks come from what each thread keeps.
void keepMemoryUseEven() {
  mallopt(M_ARENA_MAX, 1);
}

void giveBackFreeMemory() {
  malloc_trim(0);
}

}  // namespace QXPlatform
