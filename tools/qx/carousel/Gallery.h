#pragma once

#include "tools/qx/CarouselOptions.h"

namespace qx {

// Writes the page with every push of the files, drawn in every look, beside what is found in it. Reports to
// standard output; returns the exit code, which is 1 when something was no push. REQUIRES: an application
// object.
int runGallery(const CarouselInvocation& invocation);

}  // namespace qx
