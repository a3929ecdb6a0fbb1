#pragma once

#include <string>

// What a camera might have taken, 1200 by 675 pixels, as "JPEG", "PNG" or "WEBP": light that changes slowly,
// things with edges in it, and the grain of the film. The same each time.
std::string encodedPhotograph(const char* format);
