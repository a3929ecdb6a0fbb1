#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/network/URLSession.h"

namespace QXPlatform {

// Takes what a server sends as its final answer. One thread at a time. The errors name the cause alone.
class ResponseBody {
 public:
  virtual ~ResponseBody() = default;
  // Called before the first byte when the server has said how many come. A hint: fewer or more may follow.
  virtual std::optional<URLError> expect(std::size_t size) = 0;
  virtual std::optional<URLError> append(std::string_view bytes) = 0;
  // Called once, after the last byte of a whole answer.
  virtual std::optional<URLError> finish() = 0;
};

}  // namespace QXPlatform
