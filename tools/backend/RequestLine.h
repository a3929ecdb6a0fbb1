#pragma once

#include <string>

#include "QXPlatform/foundation/JSON.h"
#include "tools/backend/HTTPMessages.h"

namespace backend {

// {"method": "POST", "path": "/a?b=c", "headers": {...}, "body": ...} as JSON text without a line break at
// the end. Fields of one name are joined with ", ". The body is a JSON value when it is JSON, null when it
// is empty, else text in which bytes that are no UTF-8 show as U+FFFD. Any thread.
std::string requestLine(const Request& request, QXPlatform::JSONStyle style = QXPlatform::JSONStyle::compact);

}  // namespace backend
