#include "QXPlatform/foundation/MemoryUse.h"

#include <malloc.h>

namespace QXPlatform {

// The allocator would keep eight pools a processor, each with holes of its own, and let them grow for tens of
// thousands of notifications.
void keepMemoryUseEven(int pools) {
  mallopt(M_ARENA_MAX, pools);
}

void giveBackFreeMemory() {
  malloc_trim(0);
}

}  // namespace QXPlatform
